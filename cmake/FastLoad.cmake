# What makes a process start fast. Process start-up is most of what an autocli command costs, so
# the libraries are linked to bind as little as possible when they load. Every option of that kind
# is here, with its reason; bench/README.md has the figures.
#
# - Each library is named by its place relative to whoever loads it ($ORIGIN/../bin/libX.so, from
#   bin/ or plugins/), so the loader opens it at once: a search path would first be probed for a
#   dozen processor-specific subfolders in every process. Nothing is left to search for.
# - Each library binds its own symbols to itself (-Bsymbolic): no look-up, and no lazy-binding
#   stub, for the hundreds of calls and tables that stay inside it.
# - An inline variable or a static of an inline function is an object of its own library too
#   (-fno-gnu-unique; clang makes them so anyway): a "unique" symbol is looked up in every loaded
#   object at load, -Bsymbolic or not, and the host library's column tables are such variables.
# - Code and read-only data share one mapping (noseparate-code): half the mappings to make; and
#   relative relocations are packed, a few bytes for what took 24 each.
# - Loading libstdc++.so binds thousands of its symbols in every process. autocli carries the C++
#   runtime instead: the parts that it and the libraries use, linked in and exported. The
#   libraries take it from whichever executable loads them: from autocli, or from libstdc++.so in
#   hostsim, the tests and the benchmarks.
# - The unwinder is linked into each of them too (it keeps its symbols hidden, so it cannot be
#   shared): loading libgcc_s.so would cost a mapping and its start-up probe of the processor.
#   Every copy finds the unwind tables of every loaded object, so exceptions cross freely.
# - SQLite is linked into the host library from its static archive, its symbols kept hidden: the
#   shared library is built to bind all of its 1,200 symbols at load, which would cost every
#   autocli process more than the command itself. The math library it calls is opened when first
#   called (hostsim/core/MathLibrary.cpp).
set(CMAKE_SKIP_BUILD_RPATH ON)
set(FAST_LOAD_LINK_OPTIONS -Wl,-z,noseparate-code -Wl,-z,pack-relative-relocs)

function(link_host_library target)
    target_link_options(${target} PRIVATE -Wl,-Bsymbolic ${FAST_LOAD_LINK_OPTIONS})
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
    if(EMBED_CXX_RUNTIME)
        target_link_options(${target} PRIVATE -nodefaultlibs)
        target_link_libraries(${target} PRIVATE c gcc_eh gcc)
    endif()
endfunction()

# A library in bin/ that executables and plug-ins link to, named by its path from either. The
# option goes through a file, where no shell can take $ORIGIN for a variable.
function(name_by_origin target)
    set(options ${CMAKE_BINARY_DIR}/${target}-soname.rsp)
    file(GENERATE OUTPUT ${options}
         CONTENT "-Wl,-soname,$ORIGIN/../bin/$<TARGET_FILE_NAME:${target}>\n")
    set_target_properties(${target} PROPERTIES NO_SONAME ON LINK_DEPENDS ${options})
    target_link_options(${target} PRIVATE @${options})
endfunction()

# SQLite from its static archive, hidden in `target`. Only one library of a process may carry it:
# two copies of SQLite in one process don't see each other's POSIX locks on a database and can
# drop them. The math library its SQL functions call is not linked: hostsim/core/MathLibrary.cpp
# opens it at the first such call, so that a process that makes none (every one, today) does not
# map it and resolve its symbols.
function(link_static_sqlite target)
    find_library(SQLITE3_ARCHIVE NAMES libsqlite3.a REQUIRED)
    target_link_libraries(${target} PRIVATE ${SQLITE3_ARCHIVE})
    target_link_options(${target} PRIVATE -Wl,--exclude-libs,libsqlite3.a)
endfunction()

# `libraries`: those whose needs from the runtime autocli must carry.
function(embed_cxx_runtime target libraries)
    target_link_options(${target} PRIVATE ${FAST_LOAD_LINK_OPTIONS})
    if(EMBED_CXX_RUNTIME)
        set(symbols ${CMAKE_BINARY_DIR}/cxx-runtime-symbols)
        set(files)
        foreach(library IN LISTS libraries)
            list(APPEND files $<TARGET_FILE:${library}>)
        endforeach()
        add_custom_command(OUTPUT ${symbols}.ld ${symbols}.list
                           COMMAND bash ${CMAKE_SOURCE_DIR}/scripts/cxx-runtime-symbols.sh
                                   ${symbols} ${files}
                           DEPENDS ${libraries} ${CMAKE_SOURCE_DIR}/scripts/cxx-runtime-symbols.sh
                           VERBATIM)
        add_custom_target(${target}_runtime_symbols DEPENDS ${symbols}.ld ${symbols}.list)
        add_dependencies(${target} ${target}_runtime_symbols)
        # Only what the libraries take is exported, so the linker drops the rest of the runtime.
        target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc
                            -Wl,--dynamic-list=${symbols}.list -Wl,--gc-sections)
        set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${symbols}.list)
        target_link_libraries(${target} PRIVATE ${symbols}.ld)
    endif()
endfunction()
