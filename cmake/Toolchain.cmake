# Warnings, sanitizers, the compiler cache and a fast linker: everything that is the same for all targets.

add_library(corvelle_options INTERFACE)
target_compile_options(corvelle_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 takes the members that a variant doesn't hold for uninitialised ones.
    target_compile_options(corvelle_options INTERFACE -Wno-maybe-uninitialized)
endif()
target_compile_definitions(corvelle_options INTERFACE QT_NO_FOREACH QT_NO_CAST_TO_ASCII
    CORVELLE_VERSION="${PROJECT_VERSION}")

if(CORVELLE_SANITIZE)
    add_compile_options(-fsanitize=${CORVELLE_SANITIZE} -fno-omit-frame-pointer
        -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${CORVELLE_SANITIZE})
endif()

if(CORVELLE_FUZZ)
    # The fuzzer steers by the branches that the readers take, so the libraries count theirs too.
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

find_program(MOLD_PROGRAM mold)
if(MOLD_PROGRAM)
    add_link_options(-fuse-ld=mold)
endif()
