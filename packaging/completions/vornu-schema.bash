# Completion of vornu-schema for bash.
_vornu_schema()
{
    mapfile -t COMPREPLY < <(compgen -W "--markdown --help" -- "${COMP_WORDS[COMP_CWORD]}")
}
complete -F _vornu_schema vornu-schema
