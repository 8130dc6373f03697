# tinyxml2::tinyxml2: the installed one natively; for Windows built from the distribution's source, whose folder the
# scripts name.
if(WIN32)
    set(KELVANE_TINYXML2_SOURCE "" CACHE PATH "Folder of the distribution's tinyxml2 source")
    add_library(kelvane_tinyxml2 STATIC ${KELVANE_TINYXML2_SOURCE}/tinyxml2.cpp)
    target_include_directories(kelvane_tinyxml2 SYSTEM PUBLIC ${KELVANE_TINYXML2_SOURCE})
    add_library(tinyxml2::tinyxml2 ALIAS kelvane_tinyxml2)
else()
    find_package(tinyxml2 REQUIRED)
endif()
