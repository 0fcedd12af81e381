# Completion of tarnctl for bash: source <(tarnctl completion bash)
_tarnctl() {
  local IFS=$'\n'
  COMPREPLY=($("${COMP_WORDS[0]}" candidates --breaks "$COMP_WORDBREAKS" -- "${COMP_LINE:0:COMP_POINT}" 2>/dev/null))
  if [[ ${#COMPREPLY[@]} -gt 0 && ${COMPREPLY[0]} == *[=/.] ]]; then
    compopt -o nospace
  fi
}
complete -o default -F _tarnctl tarnctl
