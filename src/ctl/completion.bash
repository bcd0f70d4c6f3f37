# Completion of quillnestctl for bash.

# Puts the lines that the program itself answers into `candidates`.
_quillnestctl_ask() {
  local lines
  mapfile -t lines < <("${COMP_WORDS[0]/#\~/$HOME}" "$@" 2>/dev/null)
  candidates+=("${lines[@]}")
}

_quillnestctl() {
  local line=${COMP_LINE:0:COMP_POINT} words word candidates=() candidate prefix key=1 i
  COMPREPLY=()
  # Bash splits words at colons, which stand in commands like "open:"; so the line is split once more, at blanks.
  read -ra words <<<"$line"
  [[ $line == *[[:blank:]] ]] && words+=('')
  word=${words[-1]}
  case ${#words[@]}:${words[1]-} in
    [01]:*) return ;;
    2:*) candidates=(post state settings log --help --version) ;;
    3:post)
      if [[ $word == add:* ]]; then
        # A path, without the part in front of the colon.
        mapfile -t COMPREPLY < <(compgen -f -- "${word#add:}")
        compopt -o filenames 2>/dev/null
        return
      fi
      candidates=(--list --help)
      _quillnestctl_ask post --list
      # Behind the blanks stands what it means.
      candidates=("${candidates[@]%% *}")
      ;;
    3:state) candidates=(--help) ;;
    *:log) candidates=(-f --follow -n --lines --help) ;;
    3:settings) candidates=(list get set unset --help) ;;
    *:settings)
      for ((i = 3; i < ${#words[@]} - 1; i++)); do
        [[ ${words[i]} == --* ]] || key=
      done
      case ${words[2]} in
        list) candidates=(--keys --all) ;;
        get) candidates=(--raw) ;;
        set) candidates=(--bool --int --float --text --data) ;;
        unset) ;;
        *) return ;;
      esac
      [[ ${words[2]} != list && $key ]] && _quillnestctl_ask settings list --keys
      ;;
  esac
  # Bash takes what follows a colon for a word of its own and keeps what stands in front of it.
  [[ $word == *:* && $COMP_WORDBREAKS == *:* ]] && prefix=${word%"${word##*:}"}
  for candidate in "${candidates[@]}"; do
    # Options are offered to who begins one.
    [[ $candidate == "$word"* && ($word == -* || $candidate != -*) ]] || continue
    # A key may hold what is special to the shell.
    printf -v candidate %q "${candidate#"${prefix-}"}"
    COMPREPLY+=("$candidate")
  done
  # An argument follows the colon at once.
  [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} == *: ]] && compopt -o nospace 2>/dev/null
  return 0
}

complete -F _quillnestctl quillnestctl
