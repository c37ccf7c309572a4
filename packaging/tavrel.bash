# bash completion for tavrel
_tavrel() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}
    case $prev in
        --lang)
            mapfile -t COMPREPLY < <(compgen -W 'system zh en' -- "$cur")
            return
            ;;
        --quit-after-ms)
            return
            ;;
        --capture-probe)
            mapfile -t COMPREPLY < <(compgen -d -- "$cur")
            return
            ;;
    esac
    if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W '--capture --long --ocr --record --steps --pin --history --edit --settings
            --quit --lang --fake-capture --quit-after-ms --language-probe --help --help-all --version --hotkey-probe
            --capture-probe --hw-probe --autostart-probe --permissions-probe --elements-probe' -- "$cur")
    else
        mapfile -t COMPREPLY < <(compgen -f -X '!*.tavrel' -- "$cur")
    fi
} && complete -o filenames -F _tavrel tavrel
