# Completion of tarnctl for fish: tarnctl completion fish | source
function __tarnctl_candidates
  set -l line (commandline -cp)
  set -l words (commandline -opc)
  set -l found ($words[1] candidates -- "$line" 2>/dev/null)
  if test (count $found) -eq 0
    __fish_complete_path (commandline -ct)
  else
    printf '%s\n' $found
  end
end
complete -c tarnctl -f -a '(__tarnctl_candidates)'
