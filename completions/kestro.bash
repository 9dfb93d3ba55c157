# Completion of kestro's command line for bash.  What is not an option is the
# name of a file, which -o default completes.

_kestro() {
  local cur=${COMP_WORDS[COMP_CWORD]}
  local prev=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()

  # bash splits --support=5 into three words, the second of them "=".
  [[ $prev == "=" ]] && prev=${COMP_WORDS[COMP_CWORD - 2]}
  case $prev in
  -M | --maxsize | -m | --minsize | -s | --support)
    compopt +o default # a number
    return
    ;;
  esac

  if [[ $cur == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '-h --help -M --maxsize= -m --minsize=
      -p --parent-children-list -s --support= -t --tid-list -x --maximal' \
      -- "$cur")
    if [[ ${COMPREPLY[0]-} == *= ]]; then
      compopt -o nospace
    fi
  fi
}

complete -o default -F _kestro kestro
