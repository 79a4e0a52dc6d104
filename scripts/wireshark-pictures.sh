#!/usr/bin/env bash
# Renews the pictures of Wireshark in the help: a run of two seconds with the simulated pod, in the
# profile of each language, with the answer to its command unfolded.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

if [[ ${1:-} != inside ]]; then
    scripts/install-deps.sh build fonts screen drive pictures
    scripts/build.sh release nacelle-wire podsim dissector
    SCREEN_SIZE=1240x860 exec scripts/virtual-screen.sh "$0" inside
fi

work=$(mktemp -d)
clean_up() {
    # shellcheck disable=SC2046 # a number each
    kill $(jobs -p) 2>/dev/null || true
    wait
    rm -rf "$work"
}
trap clean_up EXIT
export HOME=$work XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data
settings=$XDG_CONFIG_HOME/wireshark
build/release/wireshark/install-wireshark.sh

wire=build/release/bin/nacelle-wire
host=(flags=5 carrier_pitch=-2.25 carrier_yaw=270.5 longitude=116.3912757 latitude=38.0300822
    altitude=41.123)
idle=$("$wire" compose "${host[@]}")
command=$("$wire" compose "${host[@]}" command=point_move x0=1200 y0=300)
for step in {0..66}; do
    [[ $step -eq 33 ]] && frame=$command || frame=$idle
    printf '(%d.%03d) tx %s\n' $((step * 30 / 1000)) $((step * 30 % 1000)) "$frame"
done >"$work/run.log"

# wait_for WORD FILE
wait_for() {
    until grep -q "$1" "$2"; do
        sleep 0.1
    done
}
build/release/bin/podsim --tcp 23321 --delay 6 --jitter 2 >"$work/pod.log" &
wait_for 23321 "$work/pod.log"
"$wire" record -o "$work/session.pcapng" --bridge tcp-listen://127.0.0.1:23320 \
    tcp://127.0.0.1:23321 &
recorder=$!
until "$wire" replay "$work/run.log" tcp://127.0.0.1:23320; do
    sleep 0.1
done
sleep 1
kill -INT "$recorder"
wait "$recorder"

# take LANGUAGE PROFILE NAME: Wireshark in that language, with that profile.
take() {
    printf 'language: %s\n' "$1" >"$settings/language"
    cat >"$settings/recent_common" <<'END'
privs.warn_if_elevated: FALSE
gui.geometry_main_width: 1238
gui.geometry_main_height: 838
END
    cat >"$settings/profiles/$2/recent" <<'END'
gui.geometry_main_upper_pane: 140
gui.geometry_main_lower_pane: 480
column.width: %m, 45, %t, 80, %s, 65, %d, 80, %p, 80, "%Cus:nacelle.gcu.mode", 105,
    "%Cus:nacelle.command.code or nacelle.feedback.code", 110,
    "%Cus:nacelle.feedback.result", 80, "%Cus:nacelle.response_time", 115,
    "%Cus:nacelle.period", 95, %i, 300
END
    wireshark -C "$2" -g 68 "$work/session.pcapng" >"$work/wireshark.log" 2>&1 &
    local window
    window=$(xdotool search --sync --onlyvisible --name '^session.pcapng$' | head -n 1)
    wmctrl -i -r "$window" -b add,maximized_vert,maximized_horz
    sleep 3
    # In the tree, the last line: that of the protocol.
    xdotool mousemove 200 600 click 1 sleep 0.5 key Home sleep 0.5 key End sleep 0.5 key Right sleep 2
    import -window root "$work/$3.png"
    kill %%
    wait %% || true
    convert "$work/$3.png" -strip +dither -colors 96 -define png:compression-level=9 \
        "PNG8:docs/pictures/$3.png"
}
take en NacelleBench wireshark-en
take zh_CN 云台报文工作台 wireshark-zh
