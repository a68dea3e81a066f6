# Completes the parameters of lumowatch.

_lumowatch() {
    local current=${COMP_WORDS[COMP_CWORD]} name=${COMP_WORDS[COMP_CWORD - 1]}
    # "-name=value" arrives in pieces, as "=" parts words.
    if [ "$current" = "=" ]; then
        current=
    elif [ "$name" = "=" ]; then
        name=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    case ${name,,} in
    -events) COMPREPLY=($(compgen -W "text json none" -- "$current")) ;;
    -png | -logdir) COMPREPLY=($(compgen -d -- "$current")) ;;
    -logfile) COMPREPLY=($(compgen -f -- "$current")) ;;
    -locale) COMPREPLY=($(compgen -W "en_US de_DE es_ES fr_FR" -- "$current")) ;;
    -display | -seconds | -grabs | -log) COMPREPLY=() ;;
    -help) COMPREPLY=($(compgen -W "all xml" -- "$current")) ;;
    *)
        COMPREPLY=($(compgen -W "-Display -ListDisplays -Seconds -Grabs -Png -Events -Log -LogDir
            -LogFile -Locale -help" -- "$current"))
        ;;
    esac
}
complete -F _lumowatch lumowatch
