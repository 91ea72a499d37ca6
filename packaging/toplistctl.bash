# shellcheck shell=bash
# Bash completion of toplistctl.

# The site's root: what stands behind --site on the line so far, or the current directory.
_toplistctl_site() {
  local i
  for ((i = 1; i < COMP_CWORD; i++)); do
    [[ ${COMP_WORDS[i]} == --site ]] || continue
    # "--site=DIR" comes as three words.
    if [[ ${COMP_WORDS[i + 1]} == = ]]; then ((i++)); fi
    echo "${COMP_WORDS[i + 1]}"
    return
  done
  echo .
}

# Templates by their names in the definitions, where a line is one toplist as the site writes it.
_toplistctl_templates() {
  local definitions
  definitions=$(_toplistctl_site)/d/tl/tl
  if [[ -r $definitions ]]; then cut -d '|' -f 2 "$definitions"; fi
}

_toplistctl() {
  local word=$2 previous=$3 command=${COMP_WORDS[1]} words
  COMPREPLY=()
  case $previous in
    --site | --harvest | --harvest-of | --into | =)
      mapfile -t COMPREPLY < <(compgen -d -- "$word")
      return
      ;;
    --trades | --toplists | --seed | --record | --path | --explain) return ;;
  esac
  if [[ $COMP_CWORD -eq 1 ]]; then
    words="check status show render why harvest digest expand sample init --help --version"
  else
    case $command in
      check) words="--site --json --path" ;;
      show) words="trades toplists log --site --json" ;;
      render) words="--site --record --all --into --diff $(_toplistctl_templates)" ;;
      why) words="--site --toplist --json" ;;
      digest) words="--site --update $(_toplistctl_templates)" ;;
      expand) words="--output --install --site --force" ;;
      sample) words="--trades --toplists --seed --plain --no-pictures --harvest --replace" ;;
      init) words="--harvest-of" ;;
      harvest) words="--site --explain" ;;
    esac
    words+=" --help --version"
  fi
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
  if [[ $command == expand && $word != -* && $COMP_CWORD -gt 1 ]]; then
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  fi
  if [[ $command =~ ^(sample|init)$ && $word != -* && $COMP_CWORD -gt 1 ]]; then
    mapfile -t COMPREPLY < <(compgen -d -- "$word")
  fi
}

complete -o filenames -F _toplistctl toplistctl
