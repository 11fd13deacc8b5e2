#!/bin/bash
# Runs the example program wiring and compares all that it prints.
. "$(dirname "$0")/../support/e2e.sh"

# Immediate: each value is shown before the next one is sent, by the board first, which was connected first.
# Queued: the same order, after everything was sent. Urgent: the last one arrives first.
cat >expected <<'END'
immediate:
board    bell
board    raining   1
board    visitors  12
journal  note 1    12
board    seconds   86400
board    wind      2.50
journal  note 2    2.5
board    pressure  1013.25
journal  note 3    1013.25
board    place     Elm Hill
board    outlook   showers
journal  note 4    showers
board    towns     Ash Oak
all is sent
queued:
all is sent
board    bell
board    raining   1
board    visitors  12
journal  note 5    12
board    seconds   86400
board    wind      2.50
journal  note 6    2.5
board    pressure  1013.25
journal  note 7    1013.25
board    place     Elm Hill
board    outlook   showers
journal  note 8    showers
board    towns     Ash Oak
urgent:
all is sent
board    towns     Ash Oak
journal  note 9    showers
board    outlook   showers
board    place     Elm Hill
journal  note 10   1013.25
board    pressure  1013.25
journal  note 11   2.5
board    wind      2.50
board    seconds   86400
journal  note 12   12
board    visitors  12
board    raining   1
board    bell
END
${MORVAQNDS_EMULATOR:-} "$build/examples/wiring" >out 2>err
status=$?

part() { sed -n "/^$1:/,/^$2:/p" "$3" | grep -v ':$'; }

verdict exits_with_0 "$([ $status = 0 ] || echo "exit status $status")"
verdict says_nothing_on_standard_error "$(head -c 300 err)"
verdict immediate_values_arrive_while_they_are_sent \
    "$(diff <(part immediate queued expected) <(part immediate queued out))"
verdict queued_values_arrive_in_order "$(diff <(part queued urgent expected) <(part queued urgent out))"
verdict urgent_values_arrive_in_reverse_order "$(diff <(part urgent none expected) <(part urgent none out))"
verdict nothing_else_is_printed "$(diff expected out)"
${MORVAQNDS_EMULATOR:-} "$build/examples/wiring" >/dev/full 2>err
status=$?
verdict a_full_device_is_a_failure "$([ $status = 1 ] || echo "exit status $status")"
exit $failed
