# bash completion for tavrel
_tavrel() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}
    # "--lang=zh" comes as three words.
    if [[ $cur == = ]]; then
        cur=''
    elif [[ $prev == = && COMP_CWORD -ge 2 ]]; then
        prev=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    case $prev in
        --lang)
            mapfile -t COMPREPLY < <(compgen -W 'system zh en' -- "$cur")
            return
            ;;
        --autostart-probe)
            mapfile -t COMPREPLY < <(compgen -W 'on off' -- "$cur")
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
        # Recordings, and the folders on the way to them.
        mapfile -t COMPREPLY < <(compgen -d -- "$cur"; compgen -f -X '!*.[tT][aA][vV][rR][eE][lL]' -- "$cur")
    fi
} && complete -o filenames -F _tavrel tavrel
