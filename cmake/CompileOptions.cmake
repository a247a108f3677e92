# Options for every target of the project; never exported to those who link the library.
add_library(zet_compile_options INTERFACE)

target_compile_options(zet_compile_options INTERFACE
    -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual
    $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local>
    $<$<BOOL:${ZET_WERROR}>:-Werror>
    # A fused multiply-add rounds once where the formulas round twice; pixels must be the same everywhere.
    -ffp-contract=off)

if(ZET_SANITIZE)
    add_compile_options(-fsanitize=${ZET_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${ZET_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        add_compile_options(-fsanitize-ignorelist=${CMAKE_CURRENT_LIST_DIR}/SanitizerIgnore.txt)
    endif()
endif()
