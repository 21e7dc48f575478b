#!/usr/bin/env bash
# usage: terminalTable.sh PROGRAM_FOLDER
# What the host shows on a terminal, here one of tmux: a table in place while it watches, and the
# screen as it was when it ends; a recipe's progress.
source "$(dirname "$0")/common.sh" "$1"

terminal() { tmux -S "$work/tmux" -f /dev/null "$@"; }
alsoEnd() { terminal kill-server 2>/dev/null || true; }

screen() { terminal capture-pane -p; }
shows() { screen | grep -qE -- "$1"; }

# awaits REGEX: a line of the screen that matches
awaits() {
    eventually 20 shows "$1" && return
    screen >&2
    fail "the screen has no line: $1"
}

# types COMMAND: on a cleared screen
types() {
    terminal send-keys "clear; $1" Enter
}

# awaitsEnd STATUS: of what was typed, after which the screen must be whole
awaitsEnd() {
    awaits '^ready>$'
    # Typed only now, so that a prompt in the middle of other text shows.
    terminal send-keys 'echo "status $?"' Enter
    awaits "^status $1\$"
    awaits '^ready> echo "status \$\?"$'
}

# fits COLUMNS ROWS: the table is whole on a screen of this size
fits() {
    terminal resize-window -x "$1" -y "$2"
    # Two refreshes of the table.
    sleep 0.6
    awaits '^name +address +value +age +changes +state *$'
    for row in 'fill level +IW0 +[0-9]+ +0\.[0-9] s +[0-9]+  good' \
        'door open +IX8\.0 +[01] .*  good' 'setpoint +MW100 +21\.5 .*  good' \
        'pump +QX0\.5 +1 .*  good' 'marker lamp +MX20\.0 +[01] .*  good' \
        'speed of line 2 +2:QW40 +-300 .*  good'; do
        awaits "^$row *\$"
    done
    awaits '^[0-9.]+ exchanges/s  retries 0  give-ups 0  refused 0'
    awaits '(^|  )reply p50 '
    awaits '(^|  )losses 0$'
    [ "$(screen | grep -c . || true)" -le 16 ] || { screen >&2; fail "more lines than the table"; }
}

value() { screen | sed -nE 's/^fill level +IW0 +([0-9]+) .*/\1/p'; }
hasChanged() { [ -n "$(value)" ] && [ "$(value)" != "$1" ]; }

terminal new-session -d -x 100 -y 30 "PS1='ready> ' bash --norc --noprofile"
awaits '^ready>$'
terminal send-keys "PATH=$programs:\$PATH" Enter

startPlc pty --stations 1-2 --demo-signals
expect 0 host write --tags "$demo_tags" setpoint=21.5 pump=1 "speed of line 2=-300" --link "$link"
terminal send-keys "echo what was there before" Enter
terminal send-keys "kakb-host watch --tags $demo_tags --link $link" Enter
awaits '^fill level '
fits 100 30
fits 80 24
shows 'what was there before' && fail "the table is not on a screen of its own"
eventually 5 hasChanged "$(value)" || { screen >&2; fail "the value of a ramp does not change"; }
# No room for all: those that fit, and how many do not.
terminal resize-window -x 80 -y 10
awaits '… [0-9]+ more'
terminal resize-window -x 100 -y 30
sleep 0.5
terminal send-keys C-c
awaitsEnd 0
awaits '^what was there before$'
awaits '^[0-9.]+ exchanges/s  retries 0'
shows '^fill level' && { screen >&2; fail "the table is still there"; }

# Objects are for programs, also on a terminal.
types "kakb-host watch --tags $demo_tags --link $link --json --seconds 0.2"
awaits '^\{"address":'
awaitsEnd 0

types "kakb-host recipe download $demo/recipe.csv --verify --link $link"
awaits '^writing ([0-9]+) of \1 blocks$'
awaits '^reading back ([0-9]+) of \1 blocks$'
awaits '^downloaded 9 values, verified$'
awaitsEnd 0
stopPlc

startPlc pty --stations 1-2 --silent 2
types "kakb-host recipe download $demo/recipe.csv --timeout-ms 300 --link $link"
awaits '^kakb-host: .*station 2 does not answer$'
awaitsEnd 4
stopPlc

# Ctrl-C reaches the simulated PLC that the host started as well, which must not look like a loss.
types "kakb-host watch --tags $demo_tags"
awaits '^fill level '
terminal send-keys C-c
awaitsEnd 0
awaits '^[0-9.]+ exchanges/s  retries 0  give-ups 0  refused 0 '
shows 'link lost|losses 1' && { screen >&2; fail "the end looks like a lost link"; }

# Without a link nothing is drawn.
types "kakb-host watch --tags $demo_tags --link serial:$work/none"
awaits '^kakb-host: .*No such file or directory$'
awaitsEnd 3
