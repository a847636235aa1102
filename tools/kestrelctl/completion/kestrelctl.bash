# SPDX-License-Identifier: Apache-2.0
# Completion of kestrelctl for bash.

# The words that may follow, given the command typed so far and the word before: an option whose
# value is wanted or, where the value follows an equals sign, all that is left of it, such as "4=".
_kestrelctl_words() {
  local command="$1" previous="$2"
  case "$command/$previous" in
    "gpio set/--drive" | "gpio set/--drive=") echo "push-pull open-drain open-source" ;;
    "gpio set/"[0-9]*=) echo "high low 0 1" ;;
    "uart/--flow" | "uart/--flow=") echo "none rts-cts xon-xoff" ;;
    "uart/--baud" | "uart/--baud=")
      echo "9600 19200 38400 57600 115200 230400 460800 500000 576000 921600 1000000 1152000" \
        "1500000 2000000"
      ;;
    "wifi add/--security" | "wifi add/--security=") echo "open wpa2" ;;
    "wifi forget/--security" | "wifi forget/--security=") echo "open wpa2 unknown" ;;
    */--hold | */--interval | */--bytes | */--timeout | */--wait | */*=) ;;
    "/"*) echo "gpio uart network wifi device-id log --help --version" ;;
    "gpio/"*) echo "get set watch --help" ;;
    "gpio get/"*) echo "--json --verbose --help" ;;
    "gpio set/"*) echo "--drive --hold --json --verbose --help" ;;
    "gpio watch/"*) echo "--interval --json --verbose --help" ;;
    "uart/"*) echo "--baud --flow --send --receive --bytes --timeout --hex --verbose --help" ;;
    "network/"*) echo "--wait --json --verbose --help" ;;
    "wifi/"*) echo "scan list current add forget --help" ;;
    "wifi scan/"*) echo "--wait --json --verbose --help" ;;
    "wifi list/"* | "wifi current/"*) echo "--json --verbose --help" ;;
    "wifi add/"*)
      echo "--passphrase-file --ask-passphrase --security --hex --json --verbose --help"
      ;;
    "wifi forget/"*) echo "--all --yes --security --hex --json --verbose --help" ;;
    "device-id/"*) echo "--json --verbose --help" ;;
    "log/"*) echo "--help" ;;
  esac
}

# The command that the words before the cursor name, such as "gpio set".
_kestrelctl_command() {
  local command="" word
  for word in "$@"; do
    case "$command $word" in
      " gpio" | " uart" | " network" | " wifi" | " device-id" | " log") command="$word" ;;
      "gpio get" | "gpio set" | "gpio watch") command="gpio $word" ;;
      "wifi scan" | "wifi list" | "wifi current" | "wifi add" | "wifi forget")
        command="wifi $word"
        ;;
    esac
  done
  echo "$command"
}

_kestrelctl() {
  local current="${COMP_WORDS[COMP_CWORD]}" previous="${COMP_WORDS[COMP_CWORD - 1]}"
  local command words prefix=""
  # Bash takes an equals sign for a word of its own, unless COMP_WORDBREAKS has none. It replaces
  # the current word, to which "4=" then does not belong.
  if [[ "$current" == "=" ]]; then
    previous+="=" current=""
  elif [[ "$previous" == "=" && -n "$current" ]]; then
    previous="${COMP_WORDS[COMP_CWORD - 2]}="
  elif [[ "$current" == *=* ]]; then
    prefix="${current%%=*}=" previous="$prefix" current="${current#*=}"
  fi
  command="$(_kestrelctl_command "${COMP_WORDS[@]:1:COMP_CWORD-1}")"
  case "$command/${previous%=}" in
    "uart/--send" | "wifi add/--passphrase-file")
      mapfile -t COMPREPLY < <(compgen -P "$prefix" -f -- "$current")
      return
      ;;
  esac
  words="$(_kestrelctl_words "$command" "$previous")"
  mapfile -t COMPREPLY < <(compgen -P "$prefix" -W "$words" -- "$current")
}

complete -F _kestrelctl kestrelctl
