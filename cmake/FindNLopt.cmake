# Finds the NLopt library with its C++ header. Gives the target NLopt::nlopt.
find_path(NLopt_INCLUDE_DIR nlopt.hpp)
find_library(NLopt_LIBRARY NAMES nlopt nlopt_cxx)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(NLopt DEFAULT_MSG NLopt_LIBRARY NLopt_INCLUDE_DIR)
if(NLopt_FOUND AND NOT TARGET NLopt::nlopt)
    add_library(NLopt::nlopt UNKNOWN IMPORTED)
    set_target_properties(NLopt::nlopt PROPERTIES
        IMPORTED_LOCATION "${NLopt_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${NLopt_INCLUDE_DIR}")
endif()
mark_as_advanced(NLopt_INCLUDE_DIR NLopt_LIBRARY)
