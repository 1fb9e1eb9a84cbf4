#compdef kestrovectl
# SPDX-License-Identifier: Apache-2.0
# zsh completion for kestrovectl: the program itself knows what may follow, and in which order. It is asked with the words as
# they were typed, up to the cursor.
_kestrovectl() {
  local line="${(j: :)words[1,CURRENT-1]} $QIPREFIX$IPREFIX$PREFIX"
  local -a answer
  answer=("${(@f)$(KESTROVECTL_LINE=$line command "${${(Q)words[1]}/#\~\//$HOME/}" complete-line 2>/dev/null)}")
  if [[ $answer[1] == files ]]; then
    _files
    return
  fi
  compadd -V words -- "${(@)answer[2,-1]}"
}
if [[ $zsh_eval_context[-1] == loadautofunc ]]; then
  _kestrovectl "$@"
else
  compdef _kestrovectl kestrovectl
fi
