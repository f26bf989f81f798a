# Turns the comments of a public header into what Doxygen reads: plain text above a declaration,
# with tables and examples, which are indented, kept as they are.
function plain(line) {
  gsub(/[\\@&<>#%"]/, "\\\\&", line)
  return line
}
function close_table() {
  if (table) print "/// @endverbatim"
  table = 0
}
# A specialisation says again what its template says, and Doxygen does not match the two.
/^template <>$/ { close_table(); inside = 0; skipping = 1 }
skipping {
  if (/;$/) skipping = 0
  print ""
  next
}
match($0, /^ *\/\//) {
  body = substr($0, RLENGTH + 1)
  if (body ~ /^ ---- .* ----$/) { close_table(); print ""; next }
  if (body ~ /^   / && !table && inside) { print "/// @verbatim"; table = 1 }
  if (body ~ /^ [^ ]/) close_table()
  print "///" (table ? body : plain(body))
  inside = 1
  next
}
{
  close_table()
  inside = 0
  if (match($0, /[;,{] +\/\/ /)) {
    at = RSTART + index(substr($0, RSTART), "//") - 1
    $0 = substr($0, 1, at - 1) "///<" plain(substr($0, at + 2))
  }
  print
}
