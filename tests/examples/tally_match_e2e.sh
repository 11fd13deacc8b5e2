#!/bin/bash
# Drives the example program tally: counting the words that match, and input files found by a search list.
. "$(dirname "$0")/../support/e2e.sh"
tally="${MORVAQNDS_EMULATOR:-} $build/examples/tally"

# counts NAME WORDS COMMAND...: what is counted, as "count word" pairs in the order of the table
counts() {
    local name=$1 words=$2 got
    shift 2
    if ! "$@" >out 2>err </dev/null; then
        verdict "$name" "failed: $(head -c 300 err)"
        return
    fi
    got=$(tail -n +2 out | tr -s ' \n' ' ' | sed 's/^ //; s/ $//')
    if [ "$got" = "$words" ]; then verdict "$name" ""; else verdict "$name" "counted '$got'"; fi
}

usage="usage: tally [--every SECONDS] [--follow] [--top N] [--state FILE] [--match REGEX]"
usage+=" [--path DIR:DIR --files REGEX] [FILE...]"

printf 'the fox, the hen\nTHE end of the fox 42\n' >text
counts match_anywhere_in_a_word '1 end 1 hen' $tally --match en text
counts match_with_anchors '2 fox 1 of' $tally --match '^(o|f)' text
counts match_of_whole_words '4 the' $tally --match '^the$' text
counts match_sees_lower_case '4 the' $tally --match '^t' text
counts match_of_upper_case_finds_nothing '' $tally --match T text
counts match_of_a_set '1 42' $tally --match '[0-9]' text
counts match_of_nothing_counts_all '4 the 2 fox 1 42 1 end 1 hen 1 of' $tally --match '' text
counts match_and_top '4 the' $tally --match 'h' --top 1 text
printf 'caf\303\251 cafe' >utf
counts match_of_bytes_above_127 "1 $(printf 'caf\303\251')" $tally --match "$(printf '\303\251$')" utf
head -c 70000 /dev/zero | tr '\0' x >long
counts match_of_a_word_longer_than_the_buffer "1 $(cat long)" $tally --match 'xxx$' long

$tally --state s.qn --match '^f' text >/dev/null 2>&1
counts counts_of_earlier_runs_stay '4 the 2 fox' $tally --state s.qn --match '^the' text
cp s.qn before.qn
$tally --state s.qn --match '(' text >/dev/null 2>&1
cmp -s s.qn before.qn && verdict a_bad_expression_leaves_the_state_alone "" || verdict a_bad_expression_leaves_the_state_alone changed

bad() {  # bad OPTION REASON EXPRESSION CARET: what is said of a bad expression; CARET is preceded by as many blanks
    printf 'tally: %s: %s\n    %s\n    %s' "$1" "$2" "$3" "$4"
}
expect nested_quantifiers 2 "$(bad --match 'nested *?+' 'ab**c' '   ^')" $tally --match 'ab**c' text
expect quantifier_at_the_start 2 "$(bad --match '?+* follows nothing' '*a' '^')" $tally --match '*a' text
expect group_without_end 2 "$(bad --match 'unmatched ()' '(ab' '   ^')" $tally --match '(ab' text
expect group_without_start 2 "$(bad --match 'unmatched ()' 'ab)c' '  ^')" $tally --match 'ab)c' text
expect set_without_end 2 "$(bad --match 'unmatched []' 'x[ab' '    ^')" $tally --match 'x[ab' text
expect backward_range 2 "$(bad --match 'invalid [] range' 'x[z-a]' '   ^')" $tally --match 'x[z-a]' text
expect backslash_at_the_end 2 "$(bad --match 'trailing \' 'ab\' '   ^')" $tally --match 'ab\' text
expect too_many_groups 2 "$(bad --match 'too many ()' '(a)(b)(c)(d)(e)(f)(g)(h)(i)(j)' '                           ^')" \
    $tally --match '(a)(b)(c)(d)(e)(f)(g)(h)(i)(j)' text
expect empty_operand 2 "$(bad --match '*+ operand could be empty' 'x(a*)+y' '     ^')" $tally --match 'x(a*)+y' text
expect caret_counts_characters 2 "$(bad --match 'nested *?+' "$(printf '\303\251\303\251++')" '   ^')" \
    $tally --match "$(printf '\303\251\303\251++')" text
expect newline_in_the_expression 2 "$(bad --match '?+* follows nothing' 'a *' '  ^')" $tally --match "$(printf 'a\n*')" text

mkdir -p one two two/deeper.txt
printf 'alpha beta' >one/a.txt
printf 'alpha gamma' >one/b.text
printf 'alpha delta' >two/a.txt
printf 'alpha' >'two/new
line.txt'
counts files_of_one_directory '1 alpha 1 beta' $tally --path one --files '.*\.txt'
counts files_of_two_directories '3 alpha 1 beta 1 delta' $tally --path one:two --files '.*\.txt'
counts files_by_whole_names '2 alpha 1 beta 1 delta' $tally --files '[a-z]\.txt' --path one:two
counts directories_are_no_files '2 alpha 1 beta 1 gamma' $tally --path one --files '.*'
counts missing_directories_are_skipped '1 alpha 1 beta' $tally --path none::one --files 'a.*'
counts files_beside_named_ones '2 alpha 2 beta' $tally --path one --files 'a.*' one/a.txt
counts files_and_match '2 alpha' $tally --path one --files '.*' --match ^a
ln -s nowhere one/dangling
expect a_file_that_cannot_be_read 1 "tally: one/dangling: cannot be read: No such file or directory" $tally --path one --files 'd.*'
expect no_file_has_such_a_name 1 "tally: --files: no file in one:two has such a name" $tally --path one:two --files 'a'
expect path_without_files 2 "tally: --path: needs --files; $usage" $tally --path one
expect files_without_path 2 "tally: --files: needs --path; $usage" $tally --files '.*' text
expect bad_files_expression 2 "$(bad --files 'unmatched ()' '(' ' ^')" $tally --path one --files '('
expect match_needs_a_value 2 "tally: --match: needs a value; $usage" $tally --match
exit $failed
