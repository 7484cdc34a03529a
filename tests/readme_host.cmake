# The host that the README prints is the one that is built.
file(READ ${ROOT}/README.md readme)
file(READ ${ROOT}/examples/minimal_host.cpp host)
string(FIND "${readme}" "${host}```" place)
if(place EQUAL -1)
  message(FATAL_ERROR "README.md does not show examples/minimal_host.cpp as it stands")
endif()
