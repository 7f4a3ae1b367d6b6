# The completion scripts and manual pages, made from the command tree at build time: the tool
# autocli-generate loads the plug-ins as autocli does and writes them into share/ of the build,
# in the folders an installation puts them in.

file(GLOB AUTOCLI_GENERATE_SOURCES CONFIGURE_DEPENDS
     ${CMAKE_SOURCE_DIR}/commandhost/generate/*.cpp)
add_executable(autocli-generate ${AUTOCLI_GENERATE_SOURCES})
target_link_libraries(autocli-generate PRIVATE autocli_core)

# The top namespaces that get a manual page of their own, autocli-NAME(7).
set(AUTOCLI_MANUAL_NAMESPACES network)
# Honours SOURCE_DATE_EPOCH, for a build that gives the same files again.
string(TIMESTAMP AUTOCLI_MANUAL_DATE "%Y-%m-%d" UTC)

set(GENERATED_SHARE_DIRECTORY ${CMAKE_BINARY_DIR}/share)
set(BASH_COMPLETION_FILE ${GENERATED_SHARE_DIRECTORY}/bash-completion/completions/autocli)
set(ZSH_COMPLETION_FILE ${GENERATED_SHARE_DIRECTORY}/zsh/vendor-completions/_autocli)
set(GENERATE_TEMPLATES ${CMAKE_SOURCE_DIR}/commandhost/generate)
set(GENERATE_COMMAND $<TARGET_FILE:autocli-generate> --plugin-dir=${PLUGIN_OUTPUT_DIRECTORY}
    --version=${PROJECT_VERSION} --date=${AUTOCLI_MANUAL_DATE})

# generate_from_tree(OUTPUT ARGUMENTS kind source [DEPENDS files...]): OUTPUT made by
# autocli-generate, again whenever the tool, the plug-in or a file it depends on changes.
function(generate_from_tree output)
    cmake_parse_arguments(PARSE_ARGV 1 GENERATE "" "" "ARGUMENTS;DEPENDS")
    get_filename_component(directory ${output} DIRECTORY)
    add_custom_command(OUTPUT ${output}
                       COMMAND ${CMAKE_COMMAND} -E make_directory ${directory}
                       COMMAND ${GENERATE_COMMAND} ${GENERATE_ARGUMENTS} ${output}
                       DEPENDS autocli-generate network ${GENERATE_DEPENDS}
                       VERBATIM)
endfunction()

foreach(shell bash zsh)
    set(template ${GENERATE_TEMPLATES}/autocli.${shell}.in)
    string(TOUPPER ${shell} name)
    generate_from_tree(${${name}_COMPLETION_FILE} ARGUMENTS ${shell} ${template}
                       DEPENDS ${template})
endforeach()

set(MANUAL_PAGES ${GENERATED_SHARE_DIRECTORY}/man/man1/autocli.1)
generate_from_tree(${MANUAL_PAGES} ARGUMENTS man1 ${GENERATE_TEMPLATES}/autocli.1.in
                   DEPENDS ${GENERATE_TEMPLATES}/autocli.1.in)
foreach(name IN LISTS AUTOCLI_MANUAL_NAMESPACES)
    set(page ${GENERATED_SHARE_DIRECTORY}/man/man7/autocli-${name}.7)
    generate_from_tree(${page} ARGUMENTS man7 ${name})
    list(APPEND MANUAL_PAGES ${page})
endforeach()
# Each page also compressed, as a Debian system keeps its manual pages.
set(COMPRESSED_MANUAL_PAGES)
foreach(page IN LISTS MANUAL_PAGES)
    add_custom_command(OUTPUT ${page}.gz
                       COMMAND gzip -9 -n -k -f ${page}
                       DEPENDS ${page}
                       VERBATIM)
    list(APPEND COMPRESSED_MANUAL_PAGES ${page}.gz)
endforeach()

add_custom_target(generated_files ALL
                  DEPENDS ${BASH_COMPLETION_FILE} ${ZSH_COMPLETION_FILE} ${MANUAL_PAGES}
                          ${COMPRESSED_MANUAL_PAGES})
