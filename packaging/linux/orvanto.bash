# Completion of orvanto(1) for bash: options, commands, task numbers, settings.

_orvanto() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local program=${COMP_WORDS[0]} home=() at=1 option
  COMPREPLY=()
  # The program's own options come first.
  while [ "$at" -lt "$COMP_CWORD" ]; do
    case ${COMP_WORDS[at]} in
      --home) home=(--home "${COMP_WORDS[at + 1]/#\~/$HOME}") ;;
      --ftp-port) ;;
      *) break ;;
    esac
    ((at += 2))
  done
  if [ "$at" -gt "$COMP_CWORD" ]; then  # the value of one of them
    if [ "$previous" = --home ]; then compopt -o dirnames; fi
    return
  fi
  if [ "$at" -eq "$COMP_CWORD" ]; then
    local commands
    commands=$("$program" --help 2>/dev/null | sed -n 's/^  \([a-z]\+\).*/\1/p')
    mapfile -t COMPREPLY < <(compgen -W "--home --ftp-port --help invisible $commands" -- "$word")
    return
  fi
  case ${COMP_WORDS[at]} in
    delete | run | edit)
      if [ $((COMP_CWORD - at)) -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W \
          "$("$program" "${home[@]}" list 2>/dev/null | sed -n 's/^\([0-9]\+\)).*/\1/p')" -- "$word")
        return
      fi
      ;;
    get | set)
      _orvanto_setting "$((COMP_CWORD - at))"
      return
      ;;
  esac
  case $previous in
    check | --script | --program | --print | --sound) compopt -o default ;;
    --window) mapfile -t COMPREPLY < <(compgen -W "1 2 3 4 5 6" -- "$word") ;;
    --*) ;;
    *)
      # The options that the usage names for this command; edit has those of add.
      local command=${COMP_WORDS[at]/#edit/add}
      option=$("$program" --help 2>/dev/null |
        sed -n "/^  $command\b/,/^  [a-z]/{/^  $command\b\|^   /p}" |
        grep -o -e '--[a-z]*')
      mapfile -t COMPREPLY < <(compgen -W "$option" -- "$word")
      ;;
  esac
}

# The section of a setting (1), or its name in the section before (2); names may hold blanks.
_orvanto_setting() {
  local table name
  table=$("$program" "${home[@]}" settings 2>/dev/null)
  if [ "$1" -eq 1 ]; then
    mapfile -t COMPREPLY < <(compgen -W "$(cut -d ' ' -f 1 <<<"$table" | sort -u)" -- "$word")
  elif [ "$1" -eq 2 ]; then
    while IFS= read -r name; do
      name=$(printf %q "$name")
      if [[ $name == "$word"* ]]; then COMPREPLY+=("$name"); fi
    done < <(sed -n "s/^$previous  *\([^\"(]*[^\"( ]\)  *[\"(].*/\1/p" <<<"$table")
  fi
}

complete -F _orvanto orvanto
