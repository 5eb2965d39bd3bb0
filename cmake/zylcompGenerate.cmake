# zylcomp_generate: compiles a database schema while the project builds.
#
#   zylcomp_generate(<target> SCHEMA <file>
#                    [DATABASE <name>]
#                    [OUTPUT_DIR <dir>]
#                    [INCLUDE_DIR <dir>...]
#                    [OPTIONS <zylcomp option>...])
#
# Runs zylcomp::zylcomp on the schema at build time, adds the generated
# {db}.c to the sources of <target> (with {db}.h, and {db}.hpp under --cpp)
# and the output directory to its include directories (PUBLIC, so that
# targets linking <target> see the generated header too). The schema is
# compiled again when it, any file it #includes, or the compiler changes:
# the compiler writes a dependency file that CMake hands to the build tool.
#
# SCHEMA       the schema file; a relative path is taken from the current
#              source directory.
# DATABASE     the name of `declare database` in the schema, which names the
#              generated files. Default: the schema file's name without its
#              last extension (shop.zyl gives shop.h and shop.c). It must be
#              known here because the build needs its outputs before it runs;
#              a schema that declares another name fails the build, saying so.
# OUTPUT_DIR   where the files are generated; a relative path is taken from
#              the current binary directory. Default:
#              ${CMAKE_CURRENT_BINARY_DIR}/zylcomp/<target>.
# INCLUDE_DIR  directories #include searches, in this order, before the
#              schema's own directory; a relative path is taken from the
#              current source directory.
# OPTIONS      further zylcomp options (see zylcomp --help): --cpp adds
#              {db}.hpp to the outputs, --cs adds {db}.cs, --xml-schema
#              {db}.xml and --java {db}.java. The other Java files, whose
#              names come from the schema's types, and the skeletons
#              {db}_udf.c / {db}_coll.c are written to OUTPUT_DIR but are
#              not known to the build: a skeleton is written only when none
#              is there, and then belongs to the project (a clean must never
#              remove it). The output directory, the include directories and
#              the dependency file are set by the arguments above and cannot
#              be given here.
#
# {db}.c is C: the project must enable the C language. Call the function in
# the directory that defines <target>.

# Run as a script after the compiler: the build expects files named after
# DATABASE, so a schema that declares another name must fail the build here,
# with a message, not later at a missing file.
if(CMAKE_SCRIPT_MODE_FILE AND DEFINED ZYLCOMP_EXPECTED_HEADER)
    if(NOT EXISTS "${ZYLCOMP_EXPECTED_HEADER}")
        message(FATAL_ERROR "zylcomp_generate: ${ZYLCOMP_SCHEMA} does not declare database "
                            "'${ZYLCOMP_DATABASE}' (no ${ZYLCOMP_DATABASE}.h was written); "
                            "pass the name it declares as DATABASE")
    endif()
    return()
endif()

include_guard(GLOBAL)

# The dependency file's paths are read relative to the binary directory.
cmake_policy(PUSH)
cmake_policy(SET CMP0116 NEW)

function(zylcomp_generate target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "SCHEMA;DATABASE;OUTPUT_DIR" "INCLUDE_DIR;OPTIONS")
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "zylcomp_generate: unknown arguments: ${arg_UNPARSED_ARGUMENTS}")
    endif()
    if(NOT arg_SCHEMA)
        message(FATAL_ERROR "zylcomp_generate(${target}): SCHEMA <file> is required")
    endif()
    if(NOT TARGET ${target})
        message(FATAL_ERROR "zylcomp_generate: there is no target '${target}'")
    endif()
    get_target_property(imported ${target} IMPORTED)
    get_target_property(aliased ${target} ALIASED_TARGET)
    if(imported OR aliased)
        message(FATAL_ERROR "zylcomp_generate: '${target}' must be a target this project builds, not an imported or alias target")
    endif()
    get_target_property(target_dir ${target} SOURCE_DIR)
    if(NOT target_dir STREQUAL CMAKE_CURRENT_SOURCE_DIR)
        message(FATAL_ERROR "zylcomp_generate: call it in the directory that defines '${target}' (${target_dir})")
    endif()
    get_property(languages GLOBAL PROPERTY ENABLED_LANGUAGES)
    if(NOT "C" IN_LIST languages)
        message(FATAL_ERROR "zylcomp_generate: the generated sources are C; enable the C language in project()")
    endif()

    foreach(option IN LISTS arg_OPTIONS)
        if(option MATCHES "^(-o|--output-dir|-I|--include-dir|--depfile)(=.*)?$" OR option MATCHES "^-[oI].")
            message(FATAL_ERROR "zylcomp_generate: '${option}' cannot be among the OPTIONS; "
                                "zylcomp_generate sets it (see OUTPUT_DIR and INCLUDE_DIR)")
        endif()
    endforeach()

    get_filename_component(schema "${arg_SCHEMA}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
    if(arg_DATABASE)
        set(db "${arg_DATABASE}")
    else()
        get_filename_component(db "${schema}" NAME_WLE)
    endif()
    if(arg_OUTPUT_DIR)
        get_filename_component(out "${arg_OUTPUT_DIR}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_BINARY_DIR}")
    else()
        set(out "${CMAKE_CURRENT_BINARY_DIR}/zylcomp/${target}")
    endif()
    set(include_options "")
    foreach(dir IN LISTS arg_INCLUDE_DIR)
        get_filename_component(include_dir "${dir}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
        list(APPEND include_options "--include-dir=${include_dir}")
    endforeach()

    # The outputs in the order the compiler opens them. The dependency file
    # names exactly these as its targets: Ninja refuses one that names an
    # output the build did not declare.
    set(sources "${out}/${db}.h" "${out}/${db}.c")
    if("--cpp" IN_LIST arg_OPTIONS)
        list(APPEND sources "${out}/${db}.hpp")
    endif()
    set(outputs ${sources})
    if("--cs" IN_LIST arg_OPTIONS)
        list(APPEND outputs "${out}/${db}.cs")
    endif()
    if("--xml-schema" IN_LIST arg_OPTIONS)
        list(APPEND outputs "${out}/${db}.xml")
    endif()
    if("--java" IN_LIST arg_OPTIONS)
        list(APPEND outputs "${out}/${db}.java")
    endif()
    set(depfile "${out}/${db}.d")

    file(RELATIVE_PATH shown "${CMAKE_SOURCE_DIR}" "${schema}")
    add_custom_command(
        OUTPUT ${outputs}
        COMMAND "${CMAKE_COMMAND}" -E rm -f "${out}/${db}.h"
        COMMAND zylcomp::zylcomp --quiet ${arg_OPTIONS} ${include_options}
                "--output-dir=${out}" "--depfile=${depfile}" "${schema}"
        COMMAND "${CMAKE_COMMAND}" "-DZYLCOMP_EXPECTED_HEADER=${out}/${db}.h" "-DZYLCOMP_DATABASE=${db}"
                "-DZYLCOMP_SCHEMA=${shown}" -P "${CMAKE_CURRENT_FUNCTION_LIST_FILE}"
        DEPENDS "${schema}" zylcomp::zylcomp
        DEPFILE "${depfile}"
        WORKING_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}"
        COMMENT "Compiling schema ${shown} with zylcomp"
        VERBATIM COMMAND_EXPAND_LISTS)

    target_sources(${target} PRIVATE ${sources})
    target_include_directories(${target} PUBLIC "${out}")
endfunction()

cmake_policy(POP)
