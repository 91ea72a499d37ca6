# shellcheck shell=bash
# Bash completion of toplistctl: asks the program itself what may stand in the place of the last word.

_toplistctl() {
  local action word=$2 words=() line=("${COMP_WORDS[@]:1:COMP_CWORD}")
  COMPREPLY=()
  # A leading "~" is the shell's, and not resolved yet.
  {
    IFS= read -r action
    mapfile -t words
  } < <("${1/#\~\//$HOME/}" complete -- "${line[@]/#\~\//$HOME/}" 2>/dev/null)
  if [[ -n $action ]]; then
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -A "$action" -- "$word")
  elif [[ ${#words[@]} -gt 0 ]]; then
    # Names out of a site's files are quoted: what is inserted must not be run.
    mapfile -t COMPREPLY < <(printf '%q\n' "${words[@]}")
  fi
}

complete -F _toplistctl toplistctl
