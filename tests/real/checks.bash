# shellcheck shell=bash
# Counts what was checked, and tells what is not as expected.

checks=0
broken_checks=0

# check WHAT EXPECTED FOUND
check() {
  checks=$((checks + 1))
  [[ $2 != "$3" ]] || return 0
  broken_checks=$((broken_checks + 1))
  printf '%s: expected %s, found %s\n' "$1" "${2:-nothing}" "${3:-nothing}"
}

# In the words of ctest.
summary() {
  echo "$broken_checks tests failed out of $checks"
  [[ $broken_checks -eq 0 ]]
}

# The lines of a table that hold something.
rows_of() {
  grep '^[^#]' "$1"
}
