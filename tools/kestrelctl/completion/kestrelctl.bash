# SPDX-License-Identifier: Apache-2.0
# Completion of kestrelctl for bash.

# The words that may follow, given the command typed so far and the option whose value is wanted.
_kestrelctl_words() {
  local command="$1" previous="$2"
  case "$command/$previous" in
    "gpio set/--drive") echo "push-pull open-drain open-source" ;;
    */--hold | */--interval) ;;
    "/"*) echo "gpio log --help --version" ;;
    "gpio/"*) echo "get set watch --help" ;;
    "gpio get/"*) echo "--json --verbose --help" ;;
    "gpio set/"*) echo "--drive --hold --json --verbose --help" ;;
    "gpio watch/"*) echo "--interval --json --verbose --help" ;;
    "log/"*) echo "--help" ;;
  esac
}

# The command that the words before the cursor name, such as "gpio set".
_kestrelctl_command() {
  local command="" word
  for word in "$@"; do
    case "$command $word" in
      " gpio" | " log") command="$word" ;;
      "gpio get" | "gpio set" | "gpio watch") command="gpio $word" ;;
    esac
  done
  echo "$command"
}

_kestrelctl() {
  local current="${COMP_WORDS[COMP_CWORD]}" previous="${COMP_WORDS[COMP_CWORD - 1]}" command
  command="$(_kestrelctl_command "${COMP_WORDS[@]:1:COMP_CWORD-1}")"
  mapfile -t COMPREPLY < <(compgen -W "$(_kestrelctl_words "$command" "$previous")" -- "$current")
}

complete -F _kestrelctl kestrelctl
