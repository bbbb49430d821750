# cmake -DSOURCE=DIR -P rooms.cmake
# The rooms stand in layers, each knowing only those below it: the reader
# (rawfile/, exif/, sony/) at the bottom; the raw decoder (raw/) on the
# reader's low-level helpers; card/ on them; documents/ on card/;
# app/ and cli/ on top, never including each other; the thumbnailer on the
# pictures and the card's safe writing. Fails naming every include that
# reaches up or across.
cmake_minimum_required(VERSION 3.21)
set(above_rawfile raw card documents app cli thumbnailer)
set(above_raw card documents app cli thumbnailer)
set(above_exif ${above_rawfile})
set(above_sony ${above_rawfile})
set(above_card documents app cli thumbnailer)
set(above_documents app cli thumbnailer)
set(above_app cli thumbnailer)
set(above_cli app thumbnailer)
set(above_thumbnailer documents app cli)
set(wrong "")
foreach(room rawfile exif sony raw card documents app cli thumbnailer)
    file(GLOB_RECURSE sources ${SOURCE}/${room}/*.h ${SOURCE}/${room}/*.cpp)
    foreach(source ${sources})
        file(STRINGS ${source} includes REGEX "^#include \"[a-z]+/")
        foreach(include ${includes})
            string(REGEX REPLACE "^#include \"([a-z]+)/.*" "\\1" target "${include}")
            if(target IN_LIST above_${room})
                file(RELATIVE_PATH shown ${SOURCE} ${source})
                string(APPEND wrong "\n  ${shown}: ${include}")
            endif()
        endforeach()
    endforeach()
endforeach()
if(wrong)
    message(FATAL_ERROR "includes that reach up or across a room:${wrong}")
endif()
