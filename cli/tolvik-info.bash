# bash completion for tolvik-info                          -*- shell-script -*-
# Installed as /usr/share/bash-completion/completions/tolvik-info.

_tolvik_info()
{
    local cur prev words cword
    _init_completion || return

    case $prev in
        -j)
            # files at a time: 1 up to the number of processor cores
            COMPREPLY=($(compgen -W "$(seq 1 "$(nproc 2>/dev/null || echo 4)")" -- "$cur"))
            return
            ;;
        --report | --contact-sheet)
            _filedir pdf
            return
            ;;
        --sony-makernote)
            # an offset in the file: nothing to offer
            return
            ;;
        --render)
            # a picture, or a folder for several
            _filedir '@(jpg|png|tif)'
            return
            ;;
        --format)
            COMPREPLY=($(compgen -W "jpg png tif" -- "$cur"))
            return
            ;;
        --rate)
            COMPREPLY=($(compgen -W "0 1 2 3 4 5" -- "$cur"))
            return
            ;;
        --label)
            COMPREPLY=($(compgen -W "Red Yellow Green Blue Purple none" -- "$cur"))
            return
            ;;
        --sidecar-name)
            # L1001234.xmp or L1001234.DNG.xmp
            COMPREPLY=($(compgen -W "base full" -- "$cur"))
            return
            ;;
        -h | --help | --version)
            return
            ;;
    esac

    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W '--json --csv --stats --raw-stats --exact --all --preflight -j
            --report --contact-sheet --sony-makernote --sensor-check --render --half --format
            --rate --reject --label --sidecar-name --help --version' -- "$cur"))
        return
    fi

    # DNG files (in any letter case) and folders, which are searched for them
    _filedir '[dD][nN][gG]'
} &&
    complete -F _tolvik_info tolvik-info

# ex: filetype=sh
