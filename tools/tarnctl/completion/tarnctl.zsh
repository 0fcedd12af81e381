#compdef tarnctl
# Completion of tarnctl for zsh: source <(tarnctl completion zsh), or a file _tarnctl in a folder of $fpath
_tarnctl() {
  local -a found going
  found=(${(f)"$("$words[1]" candidates -- "${(j: :)words[1,CURRENT-1]} $PREFIX" 2>/dev/null)"})
  if (( ! $#found )); then
    _files
    return
  fi
  going=(${(M)found:#*[=/.]})
  found=(${found:#*[=/.]})
  compadd -- $found
  compadd -S '' -- $going
}
if [[ $funcstack[1] == _tarnctl ]]; then
  _tarnctl # loaded by its first use
else
  compdef _tarnctl tarnctl
fi
