# Completion for the tools of NacelleBench: their options as --help lists them, the words of
# nacelle-config, nacelle-wire and nacelle-check, and file names.                                     -*- shell-script -*-

# _nacelle_ids TOOL BEFORE AFTER: those of a table, of which `fields` writes a row on a line.
_nacelle_ids() {
    "$1" fields | sed -n "s/^{$2\"id\":\"\([^\"]*\)\",\"$3\".*/\1/p"
}

_nacelle_wire() {
    local verb=${words[1]}
    case $verb,$prev in
        *,--command) COMPREPLY=($(compgen -W "$(_nacelle_ids "$1" '"code":[0-9]*,' size)" -- "$cur")) && return ;;
        *,--mode) COMPREPLY=($(compgen -W "$(_nacelle_ids "$1" '"code":[0-9]*,' zh)" -- "$cur")) && return ;;
        compose,--frame) COMPREPLY=($(compgen -W "host gcu" -- "$cur")) && return ;;
        *,--dir | *,--side) COMPREPLY=($(compgen -W "tx rx" -- "$cur")) && return ;;
        *,--kind) COMPREPLY=($(compgen -W "host gcu unknown" -- "$cur")) && return ;;
        *,--crc) COMPREPLY=($(compgen -W "ok bad none" -- "$cur")) && return ;;
        *,--as) COMPREPLY=($(compgen -W "pcapng line log hex" -- "$cur")) && return ;;
    esac
    if [[ $cword -eq 1 ]]; then
        COMPREPLY=($(compgen -W "$("$1" --help | sed -n 's/^  \([a-z]*\)  *[a-z].*/\1/p') --help --version" -- "$cur"))
    elif [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$(_parse_help "$1" "$verb --help")" -- "$cur"))
    elif [[ $verb == compose && $cur == command=* ]]; then
        COMPREPLY=($(compgen -W "$(_nacelle_ids "$1" '"code":[0-9]*,' size)" -- "${cur#*=}"))
    elif [[ $verb == compose ]]; then
        COMPREPLY=($(compgen -S = -W "result area $(_nacelle_ids "$1" '"frame":"[a-z]*",' offset | sort -u)" -- "$cur"))
        compopt -o nospace
    elif [[ $verb == @(send|dump|record|replay) ]]; then
        COMPREPLY=($(compgen -f -W "tcp:// tcp-listen:// udp:// serial:///" -- "$cur"))
        compopt -o nospace
    fi
}

_nacellebench() {
    local cur prev words cword
    _init_completion -n = || return
    case $1,$prev in
        nacelle-config,set) COMPREPLY=($(compgen -W "language engine" -- "$cur")) && return ;;
        nacelle-config,language | *,--language) COMPREPLY=($(compgen -W "zh en" -- "$cur")) && return ;;
        nacelle-check,--group) COMPREPLY=($(compgen -W "$("$1" --list | sed -n 's/^\([a-z]*\) .*/\1/p')" -- "$cur")) && return ;;
        nacelle-check,--case) COMPREPLY=($(compgen -W "$("$1" --list | sed -n 's/^  \([a-z_.]*\) .*/\1/p')" -- "$cur")) && return ;;
        nacelle-config,engine) COMPREPLY=($(compgen -W "ffmpeg libvlc" -- "$cur")) && return ;;
    esac
    if [[ $1 == nacelle-wire ]]; then
        _nacelle_wire "$@"
    elif [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$(_parse_help "$1")" -- "$cur"))
    elif [[ $1 == nacelle-config ]]; then
        COMPREPLY=($(compgen -W "show set" -- "$cur"))
    elif [[ $1 == nacelle-check && $prev != --* ]]; then
        COMPREPLY=($(compgen -W "tcp:// udp:// serial:///" -- "$cur"))
        compopt -o nospace
    fi
} && complete -o default -F _nacellebench @TOOLS@
