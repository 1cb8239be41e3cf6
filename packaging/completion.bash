# Completion for vornupdater, vornupdater-cli and vornsim. Options are read from the help of the
# program itself.
_vornupdater()
{
    local cur prev words cword command commands='' options=()
    _init_completion -s || return
    case ${1##*/} in
    vornupdater-cli) commands='list info firmware download update watch' ;;
    vornsim) commands='device package-server sample-firmware sample-package' ;;
    esac
    local i
    for ((i = 1; i < cword; i++)); do
        if [[ " $commands " == *" ${words[i]} "* ]]; then
            command=${words[i]}
            break
        fi
        options+=("${words[i]}")
    done

    case $prev in
    --device-dir | --dir | sample-firmware)
        _filedir -d
        return
        ;;
    --firmware | --record | --package-ca | --package | --*-file | --image | --report | --replay | \
        sample-package)
        _filedir
        return
        ;;
    esac
    if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_parse_help "$1" "$command --help")" -- "$cur")
    elif [[ -n $commands && -z ${command-} ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$cur")
    elif [[ ${1##*/} == vornupdater-cli && $command =~ ^(info|update)$ ]]; then
        local devices
        devices=$("$1" "${options[@]}" --json list 2>/dev/null | sed -nE 's/.*"device": ?"([^"]*)".*/\1/p')
        mapfile -t COMPREPLY < <(compgen -W "$devices" -- "$cur")
    fi
} && complete -F _vornupdater vornupdater vornupdater-cli vornsim
