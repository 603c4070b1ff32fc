# Completion of vornu-upgrade for bash.
_vornu_upgrade()
{
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    if [ "$previous" = "--content" ]; then
        mapfile -t COMPREPLY < <(compgen -d -- "$current")
    elif [[ $current == -* && $previous != "--output" ]]; then
        mapfile -t COMPREPLY < <(compgen -W "--content --output --check --verify --no-backup --help" -- "$current")
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
}
complete -o filenames -F _vornu_upgrade vornu-upgrade
