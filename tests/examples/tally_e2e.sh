#!/bin/bash
# Drives the example program tally: counting, keeping the state, and bad input of every sort.
. "$(dirname "$0")/../support/e2e.sh"
tally="${MORVAQNDS_EMULATOR:-} $build/examples/tally"
export ASAN_OPTIONS="${ASAN_OPTIONS:-}:detect_leaks=0"  # a child that ends over a bad stream leaves its objects

same() {  # same NAME FILE TEXT
    if [ "$(cat "$2")" = "$3" ]; then verdict "$1" ""; else verdict "$1" "$2 holds '$(head -c 300 "$2")'"; fi
}

row() { printf '%10s  %s' "$1" "$2"; }
usage="usage: tally [--every SECONDS] [--follow] [--top N] [--state FILE] [--match REGEX]"
usage+=" [--path DIR:DIR --files REGEX] [FILE...]"

printf 'the fox, the hen\nTHE end of the fox\n' >text
expect counts_a_file 0 "" $tally text
same prints_an_aligned_table out "$(row count word; echo; row 4 the; echo; row 2 fox; echo; row 1 end; echo; row 1 hen; echo; row 1 of)"
expect top_limits_the_table 0 "" $tally --top 1 text
same top_one_prints_one_row out "$(row count word; echo; row 4 the)"
$tally <text >out 2>err
same reads_standard_input_without_files out "$(row count word; echo; row 4 the; echo; row 2 fox; echo; row 1 end; echo; row 1 hen; echo; row 1 of)"
$tally --top 1 - text <text >out 2>err
same a_dash_is_standard_input out "$(row count word; echo; row 8 the)"
head -c 70000 /dev/zero | tr '\0' x >long
$tally --top 1 long | tail -n 1 | tr -d ' \n' >out
same a_word_longer_than_the_buffer_is_one_word out "1$(cat long)"
printf 'caf\303\251 caf\303\251' >utf
$tally utf | tail -n 1 >out
same words_in_utf8_stay_whole out "$(row 2 "$(printf 'caf\303\251')")"

expect first_run_makes_the_state 0 "" $tally --state s.qn text
expect second_run_loads_the_state 0 "" $tally --state s.qn text
same every_count_doubles out "$(row count word; echo; row 8 the; echo; row 4 fox; echo; row 2 end; echo; row 2 hen; echo; row 2 of)"
cp s.qn whole.qn
expect state_alone_with_empty_input 0 "" $tally --state s.qn
chmod 640 s.qn
$tally --state s.qn text >out
stat -c %a s.qn >out
same permissions_of_the_state_stay out 640
ln -s s.qn link.qn
$tally --state link.qn text >/dev/null
readlink link.qn >out
same a_link_to_the_state_stays_a_link out s.qn

expect unknown_option 2 "tally: --foo: unknown option; $usage" $tally --foo
expect missing_value 2 "tally: --state: needs a value; $usage" $tally --state
expect state_without_a_name 2 "tally: --state: needs the name of a file; $usage" $tally --state '' text
for number in 0 -1 x 4294967296 ''; do
    expect "top_of_'$number'" 2 "tally: $number: --top takes a whole number from 1 to 4294967295" $tally --top "$number"
done
expect missing_file 1 "tally: none: cannot be read: No such file or directory" $tally none
expect directory 1 "tally: .: cannot be read: Is a directory" $tally .
cp whole.qn s.qn
expect failed_input_with_state 1 "tally: none: cannot be read: No such file or directory" $tally --state s.qn text none
cmp -s s.qn whole.qn && verdict failed_input_leaves_the_state_alone "" || verdict failed_input_leaves_the_state_alone changed

not_whole() { echo "tally: $1: is not a whole state file ($2); move it away to start over"; }
short="it is empty, cut short or not a stream"
: >empty.qn
expect empty_state 1 "$(not_whole empty.qn "$short")" $tally --state empty.qn text
expect text_as_state 1 "$(not_whole text "$short")" $tally --state text text
printf 'other\0ieee\0' >foreign.qn
printf '\42\21fUD3' >>foreign.qn
expect foreign_stream_as_state 1 "$(not_whole foreign.qn 'Unknown transcriber type "other"')" $tally --state foreign.qn text
expect device_as_state 1 "tally: /dev/null: is not a regular file; give --state a file of its own" $tally --state /dev/null text
{ cat whole.qn; echo; } >longer.qn
expect state_with_bytes_behind_it 1 "$(not_whole longer.qn "$short")" $tally --state longer.qn text
expect state_in_a_missing_folder 1 "tally: none/s.qn: cannot write the state beside it: No such file or directory" $tally --state none/s.qn text
[ -e /dev/full ] && { $tally text >/dev/full 2>err; [ $? = 1 ]; verdict full_output "$([ "$(cat err)" = "tally: standard output: No space left on device" ] || cat err)"; }

# Damage of every place. A run ends with 0 or 1, never by a signal, and a refused state stays as it is. The damaged
# files are written by the shell itself: starting other programs would take longer than tally does.
bytes=($(od -An -v -tu1 whole.qn))
escaped=()
for ((place = 0; place < ${#bytes[@]}; ++place)); do printf -v "escaped[place]" '\\x%02x' "${bytes[place]}"; done
put() {  # put FILE ESCAPED...: writes bytes, each as \xNN
    local IFS=
    printf '%b' "${*:2}" >"$1"
}
put before.qn "${escaped[@]}"
cmp -s before.qn whole.qn && verdict the_shell_writes_every_byte "" || verdict the_shell_writes_every_byte "not the same"

why=""
for ((length = 0; length < ${#bytes[@]}; ++length)); do
    put cut.qn "${escaped[@]:0:length}"
    put before.qn "${escaped[@]:0:length}"
    $tally --state cut.qn text >out 2>err </dev/null
    status=$?
    mapfile -t said <err
    if [ $status != 1 ]; then why="length $length: exit status $status: ${said[*]:0:3}"; break; fi
    if [ ${#said[@]} != 1 ]; then why="length $length: said '${said[*]}'"; break; fi
    if ! cmp -s cut.qn before.qn; then why="length $length: the state changed"; break; fi
done
verdict state_cut_at_every_length "$why"

# Where every process takes long, MORVAQNDS_FLIPS names fewer masks.
why=""
for ((place = 0; place < ${#bytes[@]}; ++place)); do
    for flip in ${MORVAQNDS_FLIPS:-01 80 ff}; do
        printf -v changed '\\x%02x' $((bytes[place] ^ 0x$flip))
        put changed.qn "${escaped[@]:0:place}" "$changed" "${escaped[@]:place + 1}"
        $tally --state changed.qn text >out 2>err </dev/null
        status=$?
        if [ $status -gt 1 ]; then why="byte $place ^ $flip: exit status $status: $(head -c 300 err)"; break 2; fi
    done
done
verdict state_with_any_byte_changed "$why"

ls | grep -q 'qn\.[A-Za-z0-9]\{6\}$' && verdict nothing_is_left_beside_the_state "$(ls)" || verdict nothing_is_left_beside_the_state ""
exit $failed
