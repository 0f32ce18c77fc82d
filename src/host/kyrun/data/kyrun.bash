# Completion of kyrun for bash.
_kyrun() {
    local word=$2 before=$3
    case $before in
        -e|--eval|--engine|--property|--proxy|--timeout|--trigger|--archive|--patient) COMPREPLY=(); return ;;
        -s|--studies|--additional|--profile) mapfile -t COMPREPLY < <(compgen -d -- "$word"); return ;;
        --tools) mapfile -t COMPREPLY < <(compgen -f -X '!*.xml' -- "$word"; compgen -d -- "$word"); return ;;
        --log) mapfile -t COMPREPLY < <(compgen -f -- "$word"); return ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "-e --eval -f --file -i --interactive --test --check -p --print -s --studies
            --additional --archive --patient --engine --tools --trigger --property --profile --proxy --log --keep-running --timeout
            -h --help -v --version" -- "$word")
    else
        mapfile -t COMPREPLY < <(compgen -f -X '!*.js' -- "$word"; compgen -d -- "$word")
    fi
}
complete -o filenames -F _kyrun kyrun
