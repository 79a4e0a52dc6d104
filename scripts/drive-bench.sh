#!/usr/bin/env bash
# Drives a released program by mouse and keys on the display it finds, as a new user would. Ends with
# 0 if all of it came true; pictures of the screen are left in a folder.
# Usage: scripts/drive-bench.sh "PART..." PLACES POD_LOG PICTURES PROGRAM [ARGUMENT...]
#   PART      links: a learning run over TCP and one over UDP; picture: that of STREAM; black: STREAM
#             without an engine; language: English is chosen, and there at the next start
#   PLACES    what `tour --places` writes on such a screen
#   POD_LOG   what a simulated pod writes, which runs here by the usual ports
#   PICTURES  folder for the pictures
#   PROGRAM   how the program is started
# STREAM in the environment is the address of a picture.
set -euo pipefail

parts=$1
places=$2
pod_log=$3
pictures=$4
shift 4
program=("$@")
mkdir -p "$pictures"
bench=

give_up() {
    echo "drive-bench: this didn't come true: $1" >&2
    import -window root "$pictures/failed.png" || true
    tail -n 5 "$pod_log" >&2
    exit 1
}

# await CLAIM COMMAND...: until the command succeeds.
await() {
    local claim=$1 limit=$((SECONDS + 60))
    shift
    until "$@"; do
        [[ $SECONDS -lt $limit ]] || give_up "$claim"
        sleep 0.2
    done
}

# The newest window of that title.
find_window() {
    xdotool search --onlyvisible --name "^($1)\$" 2>/dev/null | tail -n 1 | grep .
}
is_shown() { find_window "$1" >/dev/null; }
# A search fails when any other window goes meanwhile; one that is there is found again.
window() {
    local tries
    for tries in {1..50}; do
        find_window "$1" && return
        sleep 0.1
    done
    give_up "the window $1 is there, at try $tries"
}
is_gone() { ! is_shown "$1"; }

close_window() {
    wmctrl -i -c "$(window "$1")"
    await "the window $1 is closed" is_gone "$1"
}

click() { # TITLE CLASS OBJECT
    local x y
    read -r x y < <(awk -v class="$2" -v object="$3" '$1 == class && $2 == object { print $3, $4 }' "$places")
    xdotool mousemove --window "$(window "$1")" "$x" "$y" sleep 0.2 click 1 sleep 0.3
}

# Into a field, in place of what it holds.
enter() { # TITLE CLASS OBJECT TEXT
    click "$1" "$2" "$3"
    xdotool key ctrl+a sleep 0.2 key Delete sleep 0.2 type --delay 30 "$4"
}

told() { # COUNT TEXT
    [[ $(grep -c -- "$2" "$pod_log") -ge $1 ]]
}

take_picture() {
    xdotool mousemove 1919 1079 sleep 0.5
    import -window root "$pictures/$1.png"
}

start() {
    "${program[@]}" >"$pictures/program.log" 2>&1 &
    bench=$!
    await "a window with the title $1" is_shown "$1"
    # The window comes to its whole size, and paints itself, after it has come up.
    sleep 3
}

end() {
    close_window "$1"
    wait "$bench" || give_up "the program ends with 0, not $?"
}
trap '[[ -z $bench ]] || kill "$bench" 2>/dev/null || true' EXIT

# A link by its name in the list; then one command until the pod has answered it. That the
# frames come to an end shows that the answer has come in.
learn() { # LINK PORT COMMANDS
    click "$zh" connectDevice comboBox
    xdotool type --delay 30 "$1"
    xdotool sleep 0.3 key Return sleep 0.3
    enter "$zh" connectDevice LineEdit_RemoteIp 127.0.0.1
    enter "$zh" connectDevice LineEdit_Port1 "$2"
    click "$zh" connectDevice pushButton_Conn
    await "a message about the link" is_shown "$notice"
    click "$notice" PopFrame pushButtonOK
    await "the message is closed" is_gone "$notice"
    click "$zh" flowAnalysis pushButton_record
    click "$zh" flowAnalysis pushButton_start
    await "the pod is given the command over $1" told "$3" "command 0x21"
    local size=-1
    while [[ $size -ne $(stat --format %s "$pod_log") ]]; do
        size=$(stat --format %s "$pod_log")
        sleep 1
    done
    told 1 "broken frame" && give_up "no frame is broken"
    take_picture "learnt-$1"
    click "$zh" connectDevice pushButton_Conn
}

zh=云台报文工作台
en="Gimbal Frame Workbench"
notice=提示
video=视频

drive_links() {
    click "$zh" flowAnalysis comboBox
    xdotool key Down sleep 0.3 key Return sleep 0.3
    learn TCP 2332 1
    learn UDP 2337 2
}

# The yellow of the pod's mark, as far as the compressed picture keeps it.
sees_mark() {
    take_picture video
    local share
    share=$(convert "$pictures/video.png" -fuzz 12% -fill black +opaque '#F0E000' \
        -fill white -opaque '#F0E000' -format '%[fx:int(mean*w*h)]' info:)
    [[ $share -gt 100 ]]
}

play() {
    click "$zh" flowAnalysis pushButton_video
    await "the video window" is_shown "$video"
    enter "$video" videoFrom lineEdit "$STREAM"
    click "$video" videoFrom pushButton_Refresh
}

drive_picture() {
    play
    await "the picture of the pod" sees_mark
    close_window "$video"
}

# Where an engine isn't there, the surface stays black and all else goes on.
drive_black() {
    play
    sleep 3
    sees_mark && give_up "there is no picture"
    close_window "$video"
}

# The first entry is the languages' menu, its last one is English.
drive_language() {
    click "$zh" NacelleBench menuButton
    xdotool key Down sleep 0.3 key Right sleep 0.3 key Up sleep 0.3 key Return
    await "the title is English" is_shown "$en"
    take_picture english
    end "$en"
    start "$en"
    take_picture second-start
    end "$en"
}

start "$zh"
take_picture start
click "$zh" NacelleBench pushButton_2
for part in $parts; do
    "drive_$part"
done
[[ " $parts " == *" language "* ]] || end "$zh"
bench=
echo "Driven: $parts"
