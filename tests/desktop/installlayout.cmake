# cmake -DBUILD=DIR -DPREFIX=DIR -P installlayout.cmake
# Installs the build into an empty prefix; fails unless exactly the programs
# (and the drawing half of tolvik-info), the desktop entry and the three icons
# arrive (no tests, fixtures or samples).
file(REMOVE_RECURSE ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX}
    RESULT_VARIABLE failed OUTPUT_QUIET)
if(failed)
    message(FATAL_ERROR "cmake --install failed: ${failed}")
endif()
file(GLOB_RECURSE installed RELATIVE ${PREFIX} ${PREFIX}/*)
set(expected bin/tolvik bin/tolvik-info libexec/tolvik/tolvik-info-draw
    share/applications/tolvik.desktop)
foreach(size 48 128 256)
    list(APPEND expected share/icons/hicolor/${size}x${size}/apps/tolvik.png)
endforeach()
list(SORT installed)
list(SORT expected)
if(NOT installed STREQUAL expected)
    message(FATAL_ERROR "installed:\n  ${installed}\nexpected:\n  ${expected}")
endif()
