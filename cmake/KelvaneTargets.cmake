# What every target shares: warnings, sanitizers, and the one object library that the module and the unit tests link.

add_library(kelvane_options INTERFACE)
# To some compilers a conversion is one of the sign too: the text of a failure check is its message, and takes no casts.
target_compile_options(kelvane_options INTERFACE -Wall -Wextra -Wshadow -Wconversion -Wno-sign-conversion
    "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")
# A module with names that are one in the whole process would never be unloaded. Some compilers make none.
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fno-gnu-unique KELVANE_NO_GNU_UNIQUE)
if(KELVANE_NO_GNU_UNIQUE)
    target_compile_options(kelvane_options INTERFACE -fno-gnu-unique)
endif()
if(KELVANE_WERROR)
    target_compile_options(kelvane_options INTERFACE -Werror)
endif()
if(KELVANE_SANITIZE)
    target_compile_options(kelvane_options INTERFACE -fsanitize=${KELVANE_SANITIZE} -fno-omit-frame-pointer
        -fno-sanitize-recover=all
        # COM calls by slots: the type on the other side is its maker's own.
        -fno-sanitize=vptr)
    target_link_options(kelvane_options INTERFACE -fsanitize=${KELVANE_SANITIZE})
endif()

# The module's code: audioapi, apo and the processing object framework.
add_library(kelvane_module OBJECT)
target_include_directories(kelvane_module PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(kelvane_module PUBLIC kelvane_options kelvane_platform)

# Adds the folder's sources to the module's code.
function(kelvane_module_folder)
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    target_sources(kelvane_module PRIVATE ${sources})
endfunction()
