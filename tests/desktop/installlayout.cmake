# cmake -DBUILD=DIR -DPREFIX=DIR -DMANUAL_PAGES=0|1 -P installlayout.cmake
# Installs the build into an empty prefix; fails unless exactly the programs
# (and the drawing half of tolvik-info), their manual pages, the desktop entry,
# the icons, the AppStream metadata, the thumbnailer entry, the bash
# completion and the copyright and changelog
# arrive (no tests, fixtures or samples).
file(REMOVE_RECURSE ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX}
    RESULT_VARIABLE failed OUTPUT_QUIET)
if(failed)
    message(FATAL_ERROR "cmake --install failed: ${failed}")
endif()
file(GLOB_RECURSE installed RELATIVE ${PREFIX} ${PREFIX}/*)
set(expected
    libexec/tolvik/tolvik-info-draw
    share/applications/tolvik.desktop
    share/metainfo/example.brekko.tolvik.metainfo.xml
    share/thumbnailers/tolvik.thumbnailer
    share/bash-completion/completions/tolvik-info
    share/doc/tolvik/copyright share/doc/tolvik/changelog.gz)
foreach(program tolvik tolvik-info tolvik-thumbnailer)
    list(APPEND expected bin/${program})
    if(MANUAL_PAGES)
        list(APPEND expected share/man/man1/${program}.1.gz)
    endif()
endforeach()
foreach(size 48 128 256)
    list(APPEND expected share/icons/hicolor/${size}x${size}/apps/tolvik.png)
endforeach()
list(SORT installed)
list(SORT expected)
if(NOT installed STREQUAL expected)
    message(FATAL_ERROR "installed:\n  ${installed}\nexpected:\n  ${expected}")
endif()
