#!/bin/bash
# Drives the example program tally over pipes and FIFOs whose writers stall, send whatever they like and go away, and
# ends it by signals. Nothing here waits for a fixed time: every step waits until what it needs has happened, for a
# minute at most.
. "$(dirname "$0")/../support/e2e.sh"
tally="${MORVAQNDS_EMULATOR:-} $build/examples/tally"
trap 'kill $(jobs -p) 2>/dev/null; rm -rf "$folder"' EXIT

until_() {  # until_ COMMAND...: whether the command succeeds within a minute
    local end=$((SECONDS + 60))
    until "$@"; do
        [ $SECONDS -lt $end ] || return 1
        sleep 0.02
    done
}

row() { printf '%10s  %s' "$1" "$2"; }
table() {  # table COUNT WORD ...: a whole table
    row count word
    while [ $# -gt 0 ]; do
        echo
        row "$1" "$2"
        shift 2
    done
}
last_table() { awk 'BEGIN { RS = "" } { last = $0 } END { print last }' "$1"; }
tables() { grep -c '^     count  word$' out; }

# A program in the background.
start() {  # start ARGUMENT...: output goes to out and err
    : >out
    : >err
    $tally "$@" <&0 >out 2>err 7>&- 8>&- &
    pid=$!
}
has() { grep -qxF -- "$(row "$1" "$2")" out; }
more_tables_than() { [ "$(tables)" -gt "$1" ]; }
ended() { ! jobs -r -p | grep -qx "$pid"; }
finish() {  # finish: sets `status` and `problem` when the program has ended
    if until_ ended; then
        wait "$pid"
        status=$?
        problem=""
        [ $status = 0 ] && [ ! -s err ] || problem="exit status $status, said '$(head -c 300 err)'"
    else
        kill -KILL "$pid"
        wait "$pid" 2>/dev/null
        status=none
        problem="did not end within a minute"
    fi
}
shows() {  # shows NAME COUNT WORD: waits until a running table has that row
    local why=""
    until_ has "$2" "$3" || why="no row '$2 $3' in '$(last_table out | head -c 300)'"
    verdict "$1" "$why"
}
ends_with() {  # ends_with NAME COUNT WORD ...: the program ends well, and this is its last table
    local name=$1
    shift
    finish
    if [ -z "$problem" ] && [ "$(last_table out)" != "$(table "$@")" ]; then
        problem="the last table is '$(last_table out | head -c 300)'"
    fi
    verdict "$name" "$problem"
}
fails_with() {  # fails_with NAME STATUS REGEX: the program ends with that status, and says one line that matches
    finish
    if [ "$status" = "$2" ] && [ "$(wc -l <err)" = 1 ] && grep -qxE -- "$3" err; then problem=""; fi
    verdict "$1" "$problem"
}
holds() {  # holds NAME STATE COUNT WORD ...: a run on top of the state, without input, prints this table
    local name=$1 state=$2
    shift 2
    start --state "$state" /dev/null
    ends_with "$name" "$@"
}

usage="usage: tally \[--every SECONDS\] \[--follow\] \[--top N\] \[--state FILE\] \[--match REGEX\]"
usage+=" \[--path DIR:DIR --files REGEX\] \[FILE\.\.\.\]"
for seconds in 0 -1 x '' 1e3 nan inf 0x10 1s ' 1' 1.2.3 . 0.0001 1000001; do
    start --every "$seconds" /dev/null
    fails_with "every_of_'$seconds'" 2 "tally: $seconds: --every takes seconds from 0\.001 to 1000000; $usage"
done
start --every 1 --top 0 /dev/null
fails_with a_bad_top_after_a_good_every 2 "tally: 0: --top takes a whole number from 1 to 4294967295"
start --every
fails_with every_without_a_value 2 "tally: --every: needs a value; $usage"

# Pipes.
printf 'the fox, the hen\nTHE end' | $tally >out 2>err
verdict counts_a_pipe_to_its_end "$([ "$(cat out)" = "$(table 3 the 1 end 1 fox 1 hen)" ] || cat out err)"
start /dev/null
ends_with a_device_without_text_is_empty
start - - < <(printf 'a b\n')
ends_with standard_input_named_twice_is_read_once 1 a 1 b

# 349,525 times "ab " is one line of 1 MB. Its pieces do not end where words do, because 3 divides no power of 2.
yes 'ab ' | tr -d '\n' | head -c 1048575 | $tally >out 2>err
verdict a_line_of_1_mb_in_a_pipe "$([ "$(cat out)" = "$(table 349525 ab)" ] || head -c 300 out err)"
head -c 1048576 /dev/zero | tr '\0' x >word
$tally <word | tail -n 1 | tr -d ' \n' >from_file
cat word | $tally | tail -n 1 | tr -d ' \n' >from_pipe
{ printf 1; cat word; } >expected
verdict a_word_of_1_mb_in_a_file "$(cmp expected from_file 2>&1)"
verdict a_word_of_1_mb_in_a_pipe "$(cmp expected from_pipe 2>&1)"
printf 'a\0b\1\2a\377\200 \0\0a\n\0' | $tally >out 2>err
expected=$(table 2 a 1 "$(printf 'a\377\200')" 1 b)
verdict bytes_of_every_sort_in_a_pipe "$([ "$(cat out)" = "$expected" ] || cat out err)"
printf 'a\0b\1\2a\377\200 \0\0a\n\0' >bytes
start bytes
ends_with bytes_of_every_sort_in_a_file 2 a 1 "$(printf 'a\377\200')" 1 b

# A FIFO whose writer stalls in the middle of a line. It is opened for reading too, so that opening does not block.
mkfifo fifo
exec 7<>fifo
start --every 0.05 fifo
printf 'alpha beta\nhal' >&7
shows whole_lines_are_counted_while_the_writer_stalls 1 beta
before=$(tables)
if until_ more_tables_than $((before + 2)); then why=""; else why="$(tables) tables"; fi
verdict tables_are_printed_while_the_writer_stalls "$why"
verdict half_a_line_waits_for_its_other_half "$(grep -w hal out)"
printf 'f alpha\n' >&7
shows the_other_half_completes_it 1 half
shows the_table_grows 2 alpha
printf 'la' >&7
printf 'st' >&7
exec 7>&-
ends_with the_writer_goes_away_in_the_middle_of_a_line 2 alpha 1 beta 1 half 1 last

# Writers that come when the program waits already, one after the other, the second while the first is there.
start fifo
timeout 60 bash -c 'exec >fifo; printf "one two "; (printf "two three\n")'
ends_with a_writer_may_come_late 2 two 1 one 1 three

# Only some words count, and files found by their names are inputs like others.
mkdir found
printf 'hen fox' >found/words.txt
exec 7<>fifo
start --every 0.05 --match '^.e' --path found --files '.*\.txt' fifo
printf 'ten men, two\nmen' >&7
until_ has 1 men
exec 7>&-
ends_with match_and_files_beside_a_pipe 2 men 1 hen 1 ten

# Several inputs at once: the last one comes first, and lines in parts do not get mixed up.
mkfifo left right
printf 'file words' >file
exec 7<>left 8<>right
start --every 0.05 left file right
printf 'hel' >&7
printf 'first\nwor' >&8
shows inputs_are_read_as_they_come 1 first
shows files_are_read_beside_pipes 1 words
printf 'lo\n' >&7
printf 'ld\n' >&8
exec 7>&-
shows one_of_several_inputs_may_end 1 hello
printf 'more\n' >&8
shows the_other_goes_on 1 more
exec 8>&-
ends_with several_inputs 1 file 1 first 1 hello 1 more 1 words 1 world
exec 7<>fifo
start --every 0.05 fifo file fifo
printf 'a b\n' >&7
until_ has 1 b
exec 7>&-
ends_with a_fifo_named_twice_is_read_once 1 a 1 b 1 file 1 words

for n in $(seq 150); do echo "x y$n" >"part$n"; done
start --top 1 part*
ends_with more_files_than_descriptors 150 x

exec 7<>fifo
start fifo none
fails_with a_missing_file_is_told_before_a_pipe_is_waited_for 1 \
    "tally: none: cannot be read: No such file or directory"
exec 7>&-
$tally - fifo >out 2>err <&-
status=$?
verdict closed_standard_input "$([ $status = 1 ] &&
    [ "$(cat err)" = "tally: standard input: cannot be read: Bad file descriptor" ] || echo "$status"; cat out)"
$tally file 2>err >&-
status=$?
verdict closed_standard_output "$([ $status = 1 ] &&
    [ "$(cat err)" = "tally: standard output: Bad file descriptor" ] || { echo "$status"; cat err; })"

# Signals end it in good order: what has arrived is counted and saved, a word without its line end as well.
for signal in INT TERM; do
    rm -f s.qn
    exec 7<>fifo
    start --every 0.05 --state s.qn fifo
    printf 'a b a\nc' >&7
    until_ has 2 a
    kill -$signal $pid
    ends_with "SIG${signal}_prints_the_last_table" 2 a 1 b 1 c
    holds "SIG${signal}_saves_the_state" s.qn 2 a 1 b 1 c
    exec 7>&- 7<>fifo
    start --every 0.05 --state s.qn fifo
    printf 'b d\n' >&7
    shows "a_second_run_goes_on_after_SIG$signal" 2 b
    kill -$signal $pid
    ends_with "SIG${signal}_ends_the_second_run" 2 a 2 b 1 c 1 d
    holds "SIG${signal}_saves_the_second_run" s.qn 2 a 2 b 1 c 1 d
    exec 7>&-
done

rm -f s.qn
exec 7<>fifo
start --every 0.05 --state s.qn fifo part1 part2
until_ has 2 x
kill -INT $pid
kill -INT $pid
kill -TERM $pid
finish
verdict several_signals_are_as_good_as_one "$problem"
holds several_signals_save_the_state s.qn 2 x 1 y1 1 y2
exec 7>&-

# An input that never lets the program wait: timers, and signals, come all the same.
start --every 0.05 - < <(exec yes a)
if until_ more_tables_than 2; then why=""; else why="$(tables) tables"; fi
verdict tables_are_printed_while_input_never_ends "$why"
kill -TERM $pid
finish
verdict a_signal_ends_an_input_that_never_ends "$problem"
start /dev/zero
has_read() { [ "$(awk '/^rchar/ { print $2 }' "/proc/$pid/io")" -gt "$1" ]; }
if until_ has_read 700000000; then why=""; else why="reads too slowly"; fi
kilobytes=$(awk '/^VmHWM/ { print $2 }' "/proc/$pid/status")
[ "$kilobytes" -lt 500000 ] || why="takes $kilobytes KiB"
verdict a_line_that_never_ends_takes_no_memory "$why"
kill -INT $pid
ends_with a_signal_ends_a_line_that_never_ends

# Files that grow.
rm -f s.qn
printf 'a b\nc' >log
start --follow --every 0.05 --state s.qn log file
shows follow_reads_what_is_there 1 b
printf ' a\nd' >>log
shows follow_reads_what_is_appended 2 a
printf 'ef\n' >>log
shows a_followed_line_may_come_in_halves 1 def
printf 'new\n' >log
shows a_file_written_anew_is_read_from_its_start 1 new
kill -TERM $pid
ends_with a_signal_ends_follow 2 a 1 b 1 c 1 def 1 file 1 new 1 words
holds follow_saves_the_state s.qn 2 a 1 b 1 c 1 def 1 file 1 new 1 words

printf 'a' >log
start --follow --every 0.05 <log
until_ more_tables_than 0
printf 'b\n' >>log
shows standard_input_is_followed_when_it_is_a_file 1 ab
kill -TERM $pid
ends_with a_signal_ends_followed_standard_input 1 ab

start --follow --every 0.05 fifo
timeout 60 bash -c 'echo first >fifo'
shows follow_reads_a_fifo 1 first
timeout 60 bash -c 'echo second >fifo'
shows another_writer_may_come_to_a_followed_fifo 1 second
before=$(tables)
until_ more_tables_than $((before + 2))
timeout 60 bash -c 'echo third >fifo'
shows another_writer_may_come_much_later 1 third
kill -INT $pid
ends_with a_signal_ends_a_followed_fifo 1 first 1 second 1 third

start --follow --every 0.05 - < <(printf 'a b')
shows the_end_of_a_pipe_ends_its_last_word 1 b
before=$(tables)
until_ more_tables_than "$before"
if ended; then why="it ended"; else why=""; fi
verdict the_end_of_a_pipe_does_not_end_follow "$why"
kill -INT $pid
ends_with a_signal_ends_follow_after_a_pipe 1 a 1 b

# Who reads the table goes away.
echo saved | $tally --state s.qn >out
cp s.qn whole.qn
yes a | timeout 60 $tally --every 0.05 --state s.qn 2>err | head -n 1 >out
status=${PIPESTATUS[1]}
verdict a_broken_pipe_ends_it "$([ "$status" = 1 ] && [ "$(cat err)" = "tally: standard output: Broken pipe" ] ||
    { echo "$status"; cat err; })"
verdict a_broken_pipe_leaves_the_state_alone "$(cmp s.qn whole.qn 2>&1)"

mkfifo shown
start_shown() {  # start_shown ARGUMENT...: output goes to the FIFO `shown`, which descriptor 8 reads
    exec 9<>shown 8<shown
    $tally "$@" >shown 2>err 7>&- 8<&- 9>&- &
    pid=$!
    exec 9>&-
}
rm -f s.qn
exec 7<>fifo
start_shown --every 0.05 --state s.qn fifo
printf 'a b\nc' >&7
until_ eval "IFS= read -r line <&8; [ \"\$line\" = '$(row 1 b)' ]"
kill -INT $pid
exec 8<&-
finish
verdict a_signal_is_no_failure_when_nobody_reads_the_table "$problem"
holds a_signal_saves_the_state_when_nobody_reads_the_table s.qn 1 a 1 b 1 c
exec 7>&-

# Nobody reads, so that the program is stuck in a table that is larger than a pipe. It may be between two writes just
# when a signal comes: as at a terminal, the key is pressed again.
rm -f s.qn
exec 7<>fifo
start_shown --every 0.05 --top 20000 --state s.qn fifo
seq 10001 30000 >&7
until_ eval "IFS= read -r line <&8; IFS= read -r line <&8; [ \"\$line\" = '$(row 1 10001)' ]"
press() { kill -INT $pid; [ -e s.qn ]; }
if until_ press; then why=""; else why="no state"; fi
verdict a_signal_frees_it_from_a_reader_that_sleeps "$why"
cat <&8 >/dev/null &
reader=$!
exec 8<&-
finish
verdict the_last_table_waits_for_the_reader "$problem"
kill $reader 2>/dev/null
exec 7>&-

# Descriptors of 100 and more.
cannot="cannot be waited for: its descriptor is [0-9]+, and 99 is the last that can; open fewer inputs"
for n in $(seq 100); do mkfifo "f$n"; done
start f[0-9]*
fails_with too_many_pipes 1 "tally: f[0-9]+: cannot be waited for: its descriptor is 100, and 99 is .*"
(
    for n in $(seq 3 110); do eval "exec $n</dev/null"; done
    exec $tally file >out 2>err
)
status=$?
verdict no_descriptor_left_for_signals \
    "$([ $status = 1 ] && grep -qxE "tally: signals: $cannot" err || { echo $status; cat err; })"
exit $failed
