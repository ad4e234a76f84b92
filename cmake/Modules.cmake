# corvelle_module(NAME SOURCES … [USES modules…] [LIBS libraries…])
#
# Makes the static library of one folder of src/. NAME is the folder ("base", "interface/theme"); the target is
# corvelle_<name with underscores>. The include root of a module is a folder of its own in the build tree that holds
# nothing but a link to the module's sources, so a file can include only what its module names in USES: an
# undeclared include does not compile. A module may use only what is declared before it, so a circle does not
# configure.
function(corvelle_module NAME)
    cmake_parse_arguments(ARG "STRICT" "" "SOURCES;USES;LIBS" ${ARGN})
    string(REPLACE "/" "_" id ${NAME})
    set(target corvelle_${id})
    list(TRANSFORM ARG_SOURCES PREPEND ${PROJECT_SOURCE_DIR}/src/${NAME}/)

    set(root ${PROJECT_BINARY_DIR}/include/${id})
    get_filename_component(parent ${root}/${NAME} DIRECTORY)
    file(MAKE_DIRECTORY ${parent})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/src/${NAME} ${root}/${NAME} SYMBOLIC)

    add_library(${target} STATIC ${ARG_SOURCES})
    set_target_properties(${target} PROPERTIES AUTOMOC ON)
    target_include_directories(${target} PUBLIC ${root})
    target_link_libraries(${target} PRIVATE corvelle_options Qt6::Core ${ARG_LIBS})
    if(ARG_STRICT)
        target_compile_options(${target} PRIVATE -Wconversion)
    endif()
    corvelle_use(${target} ${ARG_USES})
endfunction()

# Lets a target include and link the named modules, and nothing that these use themselves.
function(corvelle_use TARGET)
    foreach(module ${ARGN})
        string(REPLACE "/" "_" id ${module})
        if(NOT TARGET corvelle_${id})
            message(FATAL_ERROR "${TARGET} uses ${module}, which is not declared above it")
        endif()
        target_link_libraries(${TARGET} PRIVATE corvelle_${id})
    endforeach()
endfunction()

# corvelle_test(NAME SOURCES … USES … [LIBS …] [LABELS …] [MAIN file]): one test program for a module, from tests/NAME/.
# MAIN names a file of tests/support that starts another application than TestMain.cpp.
function(corvelle_test NAME)
    cmake_parse_arguments(ARG "" "MAIN" "SOURCES;USES;LIBS;LABELS" ${ARGN})
    if(NOT ARG_MAIN)
        set(ARG_MAIN TestMain.cpp)
    endif()
    string(REPLACE "/" "_" id ${NAME})
    set(target test_${id})
    list(TRANSFORM ARG_SOURCES PREPEND ${PROJECT_SOURCE_DIR}/tests/${NAME}/)
    add_executable(${target} ${ARG_SOURCES} ${PROJECT_SOURCE_DIR}/tests/support/${ARG_MAIN})
    set_target_properties(${target} PROPERTIES AUTOMOC ON)
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    # A fixture in an unnamed namespace is right in a file of its own, and a warning only where files are joined.
    target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
    target_link_libraries(${target} PRIVATE corvelle_options Qt6::Core GTest::gtest ${ARG_LIBS})
    corvelle_use(${target} ${ARG_USES})
    if("quick" IN_LIST ARG_LABELS)
        add_dependencies(quick_tests ${target})
    endif()
    set(properties TIMEOUT 300)
    if(ARG_LABELS)
        list(APPEND properties LABELS "${ARG_LABELS}")
    endif()
    gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST TEST_PREFIX "${NAME}/"
        PROPERTIES ${properties})
endfunction()
