# SPDX-License-Identifier: Apache-2.0
# bash completion for kestrovectl: the program itself knows what may follow. It is asked with the whole line: bash takes a
# colon, as in an IPv6 address, for the end of a word, and replaces only what stands behind the last one.
_kestrovectl() {
  local line=${COMP_LINE:0:COMP_POINT} typed answer
  typed=${line##*[[:space:]]}
  COMPREPLY=()
  mapfile -t answer < <(KESTROVECTL_LINE=$line "$1" complete-line 2>/dev/null)
  if [[ ${answer[0]} == files ]]; then
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$2")
    return
  fi
  COMPREPLY=("${answer[@]:1}")
  [[ $typed != "$2" ]] && COMPREPLY=("${COMPREPLY[@]#"${typed%"$2"}"}")
  return 0
}
complete -o nosort -F _kestrovectl kestrovectl
