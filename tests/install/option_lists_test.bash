# Every place that lists the options lists the same ones:
# option_lists_test.bash KESTRO SOURCE_DIR
set -euo pipefail
kestro=$1
cd "$2"

long_options() { grep -oE -- '--[a-z][a-z-]+' | sort -u; }

usage=$("$kestro" --help | long_options)
less_common=$(printf -- '--%s\n' candidates load-labels save-labels \
  stabilizer-threshold)
failures=0

# same NAME OPTIONS WANTED
same() {
  diff <(echo "$3") <(echo "$2") && return
  echo "$1: wanted the options on the left"
  failures=$((failures + 1))
}

# section NAME: one section of the manual page, as it is shown.
section() {
  mandoc -T ascii man/kestro.1 | sed 's/.\x08//g' |
    awk -v name="$1" '/^[A-Z]/ { inside = $0 == name } inside'
}

same "man page" "$(section DESCRIPTION | long_options)" "$usage"
same "man page, less common options" \
  "$(section 'LESS COMMON OPTIONS' | long_options)" "$less_common"
same completions/kestro.bash \
  "$(sed -n '/compgen -W/,/cur/p' completions/kestro.bash | long_options)" \
  "$usage"
same completions/_kestro "$(long_options <completions/_kestro)" "$usage"
[[ $failures -eq 0 ]]
