# Completion for the tools of NacelleBench: their options as --help lists them, the words of
# nacelle-config, and file names.                                     -*- shell-script -*-

_nacellebench() {
    local cur prev words cword
    _init_completion || return
    case $1,$prev in
        nacelle-config,set) COMPREPLY=($(compgen -W "language engine" -- "$cur")) && return ;;
        nacelle-config,language | *,--language) COMPREPLY=($(compgen -W "zh en" -- "$cur")) && return ;;
        nacelle-config,engine) COMPREPLY=($(compgen -W "ffmpeg libvlc" -- "$cur")) && return ;;
    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$(_parse_help "$1")" -- "$cur"))
    elif [[ $1 == nacelle-config ]]; then
        COMPREPLY=($(compgen -W "show set" -- "$cur"))
    fi
} && complete -o default -F _nacellebench @TOOLS@
