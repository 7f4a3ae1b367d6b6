# Writes the table of host operation names: every string literal of the form
# "Interface::Operation" in the sources of hostsim/ (comments left out), sorted, once each.
# Operations name themselves with such a literal where they call HostSim::PassOperation, directly
# or through a helper, so the table follows the code with nobody keeping a list.
# Usage: cmake -DSOURCE_DIR=<hostsim folder> -DOUTPUT=<file.cpp> -P OperationNames.cmake
file(GLOB_RECURSE sources ${SOURCE_DIR}/*.cpp ${SOURCE_DIR}/*.h)
list(SORT sources)
set(literal "\"[A-Za-z_][A-Za-z0-9_]*::~?[A-Za-z_][A-Za-z0-9_]*\"")
set(names)
foreach(source IN LISTS sources)
    file(STRINGS ${source} lines REGEX "${literal}")
    foreach(line IN LISTS lines)
        string(REGEX REPLACE "(^|[ \t])//.*$" "" line "${line}")
        string(REGEX MATCHALL "${literal}" found "${line}")
        list(APPEND names ${found})
    endforeach()
endforeach()
list(REMOVE_DUPLICATES names)
list(SORT names)
# Each name is kept in a row of fixed width, so that the table holds no pointer: a pointer would
# be relocated, and its page written, in every process that loads the library.
set(width 0)
foreach(name IN LISTS names)
    # The quoted name's length, less its two quotes, and its closing NUL.
    string(LENGTH "${name}" length)
    math(EXPR length "${length} - 1")
    if(length GREATER width)
        set(width ${length})
    endif()
endforeach()
list(JOIN names ",\n    " body)
file(WRITE ${OUTPUT}
"// Made by hostsim/core/OperationNames.cmake from the sources of hostsim/ at build time.
#include \"hostsim/core/OperationNames.h\"

#include <iterator>

namespace HostSim {

namespace {

constexpr char kNames[][${width}] = {
    ${body}};

}  // namespace

std::size_t OperationCount() {
    return std::size(kNames);
}

std::string_view OperationName(std::size_t index) {
    return kNames[index];
}

}  // namespace HostSim
")
