# Doxygen input filter for the public headers. The headers document their
# declarations in plain // comments; this turns each comment block standing
# before a declaration into a /// block and each comment after a member into
# a ///< comment, and escapes the characters Doxygen would read as commands
# or markup, so that the reference shows the comments as they are written.
#
#   awk -f doxygen-filter.awk Header.h
function escape(text,    out, i, c) {
  out = ""
  for (i = 1; i <= length(text); ++i) {
    c = substr(text, i, 1)
    # "::" would be a link request; "\::" is Doxygen's literal form.
    if (substr(text, i, 2) == "::") {
      out = out "\\::"
      ++i
      continue
    }
    if (index("\\@<>#%&$", c) > 0) out = out "\\"
    out = out c
  }
  return out
}
{
  line = $0
  if (match(line, /^[ \t]*\/\/\/?/)) {
    indent = line
    sub(/\/.*$/, "", indent)
    text = substr(line, RLENGTH + 1)
    print indent "///" escape(text)
    next
  }
  # A trailing comment outside any string literal: code first, then //.
  position = index(line, "//")
  if (position > 0 && index(substr(line, 1, position), "\"") == 0) {
    code = substr(line, 1, position - 1)
    text = substr(line, position + 2)
    sub(/^\/?/, "", text)
    # Notes to linters are no documentation.
    if (text ~ /^[ \t]*NOLINT/) {
      sub(/[ \t]+$/, "", code)
      print code
      next
    }
    print code "///<" escape(text)
    next
  }
  print line
}
