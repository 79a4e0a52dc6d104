#!/usr/bin/env bash
# Renews the pictures of Wireshark in the help: a run of two seconds, in the profile of each language,
# with the answer to its command unfolded. The run is made here, so that its times are always the same.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

if [[ ${1:-} != inside ]]; then
    scripts/install-deps.sh build fonts screen drive pictures
    scripts/build.sh release nacelle-wire dissector
    SCREEN_SIZE=1240x860 exec scripts/virtual-screen.sh "$0" inside
fi

work=$(mktemp -d)
clean_up() {
    kill %% 2>/dev/null || true
    wait
    rm -rf "$work"
}
trap clean_up EXIT
export HOME=$work XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data
settings=$XDG_CONFIG_HOME/wireshark
build/release/wireshark/install-wireshark.sh

# frame SECONDS tx|rx WORD...: a record of it.
frame() {
    printf '(%s) %s %s\n' "$1" "$2" "$(build/release/bin/nacelle-wire compose "${@:3}")"
}
# at MICROSECONDS: as seconds.
at() {
    printf '%d.%06d' $(($1 / 1000000)) $(($1 % 1000000))
}
for step in {0..66}; do
    host=(tx flags=5 carrier_pitch=-2.25 carrier_yaw=270.5)
    gcu=(rx --frame gcu mode=follow relative_x=14.42 relative_y=-3.39 absolute_yaw=270.49
        target_longitude=116.3912757 target_latitude=38.0300822 target_altitude=41.123
        zoom_camera1=1.5 zoom_camera2=1)
    if [[ $step -eq 33 ]]; then
        host+=(command=point_move x0=1200 y0=300)
        gcu+=(feedback=point_move result=success)
    fi
    frame "$(at $((step * 30000 + step * 7 % 11 * 40)))" "${host[@]}"
    frame "$(at $((step * 30000 + step * 5 % 13 * 30 + 6400)))" "${gcu[@]}"
done >"$work/session.line"
build/release/bin/nacelle-wire convert "$work/session.line" -o "$work/session.pcapng"

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
column.width: %m, 45, %t, 80, %s, 75, %d, 85, "%Cus:nacelle.gcu.mode", 105,
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
