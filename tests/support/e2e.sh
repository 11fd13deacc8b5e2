# What the scripts that drive built programs share; sourced by each, with the build folder as its argument. The script
# goes on in a folder of its own, which is removed at the end.
set -u
build=$(realpath "$1")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit 1
failed=0

verdict() {  # verdict NAME WHY: WHY is empty when the case passed
    if [ -z "$2" ]; then
        echo "ok $1"
    else
        echo "FAILED $1: $2"
        failed=1
    fi
}

# expect NAME STATUS STDERR COMMAND...: the exit status and all of standard error
expect() {
    local name=$1 status=$2 errors=$3 got
    shift 3
    "$@" >out 2>err </dev/null
    got=$?
    if [ $got != "$status" ]; then
        verdict "$name" "exit status $got: $(head -c 300 err)"
    elif [ "$(cat err)" != "$errors" ]; then
        verdict "$name" "said '$(head -c 300 err)'"
    else
        verdict "$name" ""
    fi
}
