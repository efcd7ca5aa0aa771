# Completion of vso in bash. What can be encoded is asked of the program itself.

# Replies with those of the words of $1 that begin with $2.
_vso_words() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2")
}

# Replies with files (-f) or folders (-d), which bash then quotes and marks as such.
_vso_paths() {
  compopt -o filenames 2> /dev/null
  mapfile -t COMPREPLY < <(compgen "$1" -- "$2")
}

_vso_list() {
  "$1" encode --list 2> /dev/null
}

# $1: the program; $2: the word; then the words between "encode" and it: group, command, arguments.
_vso_encode() {
  local program=${1/#\~/$HOME} word=$2
  shift 2
  if [[ $# -eq 0 && $word == -* ]]; then
    _vso_words "--help --list" "$word"
    return
  fi
  if [[ $# -ge 2 && $word == -* ]]; then
    # A line of the list: group, command, and each argument's name, in brackets if it may be left out.
    _vso_words "--help --line $(_vso_list "$program" | grep -- "^$1 $2 " | grep -o -- '--[a-z-]*')" "$word"
    return
  fi
  case $# in
    0) _vso_words "$(_vso_list "$program" | cut -d ' ' -f 1 | uniq)" "$word" ;;
    1) _vso_words "$(_vso_list "$program" | grep -- "^$1 " | cut -d ' ' -f 2)" "$word" ;;
  esac
}

_vso() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command="" at
  COMPREPLY=()
  # Bash takes "--color=never" for three words.
  if [[ $word == "=" ]]; then
    word=""
  elif [[ $previous == "=" ]]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  for ((at = 1; at < COMP_CWORD; ++at)); do
    [[ ${COMP_WORDS[at]} == -* ]] && continue
    command=${COMP_WORDS[at]}
    break
  done

  case $command:$previous in
    decode:--color | replay:--color | node:--color)
      _vso_words "auto always never" "$word"
      return
      ;;
    replay:--state | serve:--state)
      _vso_paths -d "$word"
      return
      ;;
    node:--map)
      _vso_paths -f "$word"
      return
      ;;
    decode:--metrics-name | decode:--node | serve:--listen | serve:--save-every)
      return
      ;;
  esac
  case $command in
    "") _vso_words "decode encode node replay serve --help --version" "$word" ;;
    encode) _vso_encode "${COMP_WORDS[0]}" "$word" "${COMP_WORDS[@]:at+1:COMP_CWORD-at-1}" ;;
    serve) _vso_words "--help --listen --metrics --save-every --state" "$word" ;;
    decode | replay | node)
      if [[ $word != -* ]]; then
        _vso_paths -f "$word"
        return
      fi
      case $command in
        decode) _vso_words "--color --help --json --metrics --metrics-name --node" "$word" ;;
        replay) _vso_words "--as-recorded --color --help --state" "$word" ;;
        node) _vso_words "--color --health --help --json --map --xml" "$word" ;;
      esac
      ;;
  esac
}

complete -F _vso vso
