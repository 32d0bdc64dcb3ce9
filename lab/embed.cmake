# Puts the report page together from its parts and writes it as a source file:
#   cmake -DPAGE=DIR -DCHART=FILE -DOUTPUT=FILE.cpp -P embed.cmake
# The chart library keeps its notice of copyright, which stands at its head.
cmake_minimum_required(VERSION 3.22)
file(READ ${PAGE}/page.html page)
file(READ ${PAGE}/page.css styles)
file(READ ${CHART} chart)
# In this order: each file uses only what stands before it.
set(scripts "")
foreach(part data show chart summary lines function sides scatter machines families course identity main)
  file(READ ${PAGE}/${part}.js text)
  string(APPEND scripts "${text}")
endforeach()
string(TOLOWER "${chart}${scripts}" lower)
string(FIND "${lower}" "</script" found)
if(NOT found EQUAL -1)
  message(FATAL_ERROR "a script of the report page holds the end of a script element")
endif()
string(REPLACE "@styles@" "${styles}" page "${page}")
string(REPLACE "@chart@" "${chart}" page "${page}")
string(REPLACE "@scripts@" "${scripts}" page "${page}")
file(WRITE ${OUTPUT}.html "${page}")
file(READ ${OUTPUT}.html bytes HEX)
string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
file(WRITE ${OUTPUT} "// The report page without data, from lab/page and the chart library.
#include <string_view>

namespace krlab {
extern const std::string_view emptyPage;
static const unsigned char bytes[] = {${bytes}};
const std::string_view emptyPage(reinterpret_cast<const char*>(bytes), sizeof bytes);
} // namespace krlab
")
