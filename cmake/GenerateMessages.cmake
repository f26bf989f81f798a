# cmake -DLIST=messages.h -DFORM=form -DOUTPUT=file -P GenerateMessages.cmake
# Writes one form of the list of statuses: kormsgs.eng, statuses.md or messages.mc (the input of
# the Windows message compiler).

if(FORM STREQUAL "kormsgs.eng")
  set(result "// English message texts of nomutil: a number and its text in double quotes a line.\n")
elseif(FORM STREQUAL "statuses.md")
  set(result "# Statuses\n
Operations return 0 for success, else one of these numbers. The page is made from the list in
`include/sys/messages.h`.\n
| Number | Constant | Text |
| --- | --- | --- |\n")
elseif(FORM STREQUAL "messages.mc")
  set(result "MessageIdTypedef=DWORD
SeverityNames=(Info=0x1)
FacilityNames=(Kora=0x100)
LanguageNames=(English=0x409:MSG00409)\n")
else()
  message(FATAL_ERROR "unknown form: ${FORM}")
endif()

file(READ ${LIST} rest)
string(FIND "${rest}" "#define NOMUTIL_MESSAGE_LIST(X)" start)
string(SUBSTRING "${rest}" ${start} -1 rest)
string(FIND "${rest}" "\n\n" end)
string(SUBSTRING "${rest}" 0 ${end} rest)

# One row of the list: X(Name, number, "text"), which may be broken over lines behind a comma.
set(gap "[ \\\n]*")
set(row "^[^\n]*\n *X\\(([A-Za-z0-9]+),${gap}([0-9]+),${gap}\"([^\"\\%]+)\"\\)")
while(rest MATCHES "${row}")
  set(name ${CMAKE_MATCH_1})
  set(number ${CMAKE_MATCH_2})
  set(text "${CMAKE_MATCH_3}")
  string(LENGTH "${CMAKE_MATCH_0}" length)
  string(SUBSTRING "${rest}" ${length} -1 rest)
  if(FORM STREQUAL "kormsgs.eng")
    string(APPEND result "${number} \"${text}\"\n")
  elseif(FORM STREQUAL "statuses.md")
    string(APPEND result "| ${number} | `k${name}` | ${text} |\n")
  else()
    string(APPEND result "
MessageId=${number}
Severity=Info
Facility=Kora
SymbolicName=MSG_${number}
Language=English
${text}
.\n")
  endif()
endwhile()
string(STRIP "${rest}" rest)
if(NOT rest STREQUAL "")
  message(FATAL_ERROR "${LIST}: this row of the list is not understood:${rest}")
endif()
file(WRITE ${OUTPUT} "${result}")
