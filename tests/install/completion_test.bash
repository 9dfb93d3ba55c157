# Runs the bash completion as the shell would: completion_test.bash FILE, where
# FILE is completions/kestro.bash.
set -u

# shellcheck source=completions/kestro.bash
source "$1"
compopt() { :; } # works only while bash itself completes
failures=0

# expect WANTED WORD ...: what completing the last word after kestro offers.
expect() {
  local wanted=$1
  shift
  COMP_WORDS=(kestro "$@")
  COMP_CWORD=$#
  _kestro
  if [[ "${COMPREPLY[*]-}" != "$wanted" ]]; then
    echo "completing '$*': got '${COMPREPLY[*]-}', wanted '$wanted'"
    failures=$((failures + 1))
  fi
}

expect "--maxsize= --maximal" --ma
expect "--tid-list" -x --t
expect "-h --help -M --maxsize= -m --minsize= -p --parent-children-list -s \
--support= -t --tid-list -x --maximal" -
expect "" -s -
expect "" --support = 5
expect "" mol
expect "" --c
[[ $failures -eq 0 ]]
