# Sourced by run.sh: says what a printed job holds.
# shellcheck shell=bash

# The bytes of standard input as text: ESC as \e, FS as \s, LF as \n with a line break after it,
# and so on. Blocks begin a line.
show_bytes() {
  od -An -v -tu1 | awk '
    {
      for (i = 1; i <= NF; ++i) {
        b = $i
        if (b == 27) text = text "\\e"
        else if (b == 28) text = text "\\s"
        else if (b == 10) text = text "\\n\n"
        else if (b == 12) text = text "\\f\n"
        else if (b == 13) text = text "\\r"
        else if (b == 92) text = text "\\\\"
        else if (b >= 32 && b <= 126) text = text sprintf("%c", b)
        else text = text sprintf("\\x%02x", b)
      }
    }
    END {
      gsub(/\\eQ[0-9];[0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9]\/[a`]/, "\n&", text)
      gsub(/\n\n/, "\n", text)
      sub(/^\n/, "", text)
      print text
    }'
}

# How often a block of a kind (a character class of its digit) begins in a file.
count_blocks() {
  { LC_ALL=C grep -ao $'\x1bQ'"$1"';[0-9]\{10\}/[a`]' "$2" || true; } | wc -l
}

describe_output() {
  local file=$1
  echo "  output:   $file"
  echo "  size:     $(wc -c <"$file") bytes"
  echo "  blocks:   $(count_blocks '[0-9]' "$file"), of them $(count_blocks 9 "$file") of page format" \
       "and $(count_blocks 2 "$file") of page data"
  printf "  it begins (%s is ESC, %s is FS):\n" "\\e" "\\s"
  head -c 700 "$file" | show_bytes | head -n 14 | sed 's/^/    /'
}
