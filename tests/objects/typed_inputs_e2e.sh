#!/bin/bash
# Compiles inputs made from typed functions: what fits, with the oldest and the current standard, and what does not fit,
# which must be refused for that reason.
set -u
build=$1
here=$(cd "$(dirname "$0")" && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failed=0

compiler=$(sed -n 's/^set(CMAKE_CXX_COMPILER "\(.*\)")$/\1/p' "$build"/CMakeFiles/*/CMakeCXXCompiler.cmake)
flags=(-x c++ -fsyntax-only -I"$here/../../include" -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    -Wnon-virtual-dtor -Werror)

verdict() {  # verdict NAME WHY: an empty WHY is success
    if [ -z "$2" ]; then
        echo "ok $1"
    else
        echo "FAILED $1: $2"
        sed 's/^/    /' "$folder/log" | head -n 20
        failed=1
    fi
}

# compile STANDARD STATEMENT: compiles the statement after the declarations that all cases share.
compile() {
    {
        echo '#include <Obj.h>'
        echo 'struct Meter : qnObj {};'
        echo 'struct Tank : qnObj {};'
        for value in int qnBool short unsigned long 'long long' float double char\* 'const char*' qnStr 'const qnStr&' \
            'qnStr&' qnStrArray qnObj\*; do
            name=${value// /} name=${name//\*/Ptr}
            echo "inline void on_${name//&/Ref}(Meter*, $value) {}"
        done
        echo 'inline void on_signal(Meter*) {}'
        echo 'inline int on_result(Meter*, int) { return 0; }'
        echo 'inline void use(Meter* m, Tank* t) {'
        echo "    $2"
        echo '    static_cast<void>(m), static_cast<void>(t);'
        echo '}'
    } | "$compiler" "${flags[@]}" -std="$1" - >"$folder/log" 2>&1
}

standards=(c++11 c++17)

accepts() {  # accepts NAME STATEMENT
    local standard
    for standard in "${standards[@]}"; do
        compile $standard "$2"
        verdict "$1-$standard" "$([ $? = 0 ] || echo "does not compile")"
    done
}

# refuses NAME STATEMENT REASON: REASON is a pattern of what the compiler must say.
refuses() {
    local standard
    for standard in "${standards[@]}"; do
        if compile $standard "$2"; then
            verdict "$1-$standard" "compiles"
        else
            verdict "$1-$standard" "$(grep -qE "$3" "$folder/log" || echo "is not refused for that reason")"
        fi
    done
}

accepts EveryTypeOfValue 'm->addInput("in", m, &on_signal); m->addInput("in", m, &on_qnBool);
    m->addInput("in", m, &on_int); m->addInput("in", m, &on_long); m->addInput("in", m, &on_float);
    m->addInput("in", m, &on_double); m->addInput("in", m, &on_charPtr); m->addInput("in", m, &on_constcharPtr);
    m->addInput("in", m, &on_qnStr); m->addInput("in", m, &on_constqnStrRef); m->addInput("in", m, &on_qnStrArray);'
accepts EveryNamedType 'm->addInput("in", qnDataType<void>(), m, &on_signal);
    m->addInput("in", qnDataType<qnBool>(), m, &on_qnBool); m->addInput("in", qnDataType<qnBool>(), m, &on_int);
    m->addInput("in", qnDataType<int>(), m, &on_int); m->addInput("in", qnDataType<long>(), m, &on_long);
    m->addInput("in", qnDataType<float>(), m, &on_float); m->addInput("in", qnDataType<double>(), m, &on_double);
    m->addInput("in", qnDataType<char*>(), m, &on_charPtr); m->addInput("in", qnDataType<char*>(), m, &on_constcharPtr);
    m->addInput("in", qnDataType<const char*>(), m, &on_charPtr); m->addInput("in", qnDataType<qnStr>(), m, &on_qnStr);
    m->addInput("in", qnDataType<qnStr>(), m, &on_constqnStrRef);
    m->addInput("in", qnDataType<qnStrArray>(), m, &on_qnStrArray);'

mismatch='the function does not take values of this data type'
refuses NamedIntForAFloat 'm->addInput("in", qnDataType<int>(), m, &on_float);' "$mismatch"
refuses NamedFloatForADouble 'm->addInput("in", qnDataType<float>(), m, &on_double);' "$mismatch"
refuses NamedLongForAnInt 'm->addInput("in", qnDataType<long>(), m, &on_int);' "$mismatch"
refuses NamedIntForABool 'm->addInput("in", qnDataType<int>(), m, &on_qnBool);' "$mismatch"
refuses NamedTextForAString 'm->addInput("in", qnDataType<char*>(), m, &on_qnStr);' "$mismatch"
refuses NamedStringForText 'm->addInput("in", qnDataType<qnStr>(), m, &on_constcharPtr);' "$mismatch"
refuses NamedVoidForAnInt 'm->addInput("in", qnDataType<void>(), m, &on_int);' "$mismatch"
refuses NamedIntForASignal 'm->addInput("in", qnDataType<int>(), m, &on_signal);' 'no matching (member )?function'
refuses NamedTypeThatDoesNotTravel 'm->addInput("in", qnDataType<short>(), m, &on_short);' 'incomplete type|undefined template'

refuses AFunctionOfAShort 'm->addInput("in", m, &on_short);' 'incomplete type|undefined template'
refuses AFunctionOfAnUnsigned 'm->addInput("in", m, &on_unsigned);' 'incomplete type|undefined template'
refuses AFunctionOfALongLong 'm->addInput("in", m, &on_longlong);' 'incomplete type|undefined template'
refuses AFunctionOfAnObject 'm->addInput("in", m, &on_qnObjPtr);' 'incomplete type|undefined template'
refuses AFunctionOfAReferenceToChange 'm->addInput("in", m, &on_qnStrRef);' 'take it by value or by const reference'
refuses AFunctionWithAResult 'm->addInput("in", m, &on_result);' 'no matching (member )?function'
refuses AnotherClassOfObject 't->addInput("in", t, &on_int);' 'cannot (convert|initialize)'
refuses AFunctionWithoutACast 'm->addInput("in", qnDT_int, m, &on_int, 0);' 'no matching (member )?function'

# With the function as a template argument.
standards=(c++17)
accepts BoundFunctions 'm->addInput<&on_int>("in", m); m->addInput<&on_signal>("in", m);
    m->addInput<&on_qnBool>("in", m); m->addInput<&on_constqnStrRef>("in", m); m->addInput<&on_charPtr>("in", m, 1);'
refuses ABoundFunctionOfAShort 'm->addInput<&on_short>("in", m);' 'incomplete type|undefined template'
refuses ABoundFunctionOfAReferenceToChange 'm->addInput<&on_qnStrRef>("in", m);' 'take it by value or by const reference'
refuses ABoundFunctionWithAResult 'm->addInput<&on_result>("in", m);' 'incomplete type|undefined template|no matching'
refuses ABoundFunctionOfAnotherClass 't->addInput<&on_int>("in", t);' 'cannot (convert|initialize)'

# All of this is in the headers alone. The symbols of boxes show that symbols are looked at.
nm -DC --defined-only "$build/libmorvaqnds.so" >"$folder/log"
verdict TheLibraryExportsBoxes "$(grep -q 'qnIntData' "$folder/log" || echo "nm shows none")"
verdict TheLibraryExportsNothingOfTypedInputs "$(grep -E 'qn(Receiver|Receives|Bound|DataType|MakeReceiver)[<(]' "$folder/log" | head -n 3)"
exit $failed
