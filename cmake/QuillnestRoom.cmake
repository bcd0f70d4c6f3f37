# What every target of the project is built with, and the one way to declare a room.

add_library(quillnest_options INTERFACE)
target_compile_options(quillnest_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wconversion
  -Wno-sign-conversion -fno-strict-aliasing)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # For the compiler's cache: the preprocessed text names the precompiled header.
  target_compile_options(quillnest_options INTERFACE -fpch-preprocess)
endif()
if(QUILLNEST_WERROR)
  target_compile_options(quillnest_options INTERFACE -Werror)
endif()
if(QUILLNEST_SANITIZE)
  target_compile_options(quillnest_options INTERFACE -fsanitize=${QUILLNEST_SANITIZE} -fno-omit-frame-pointer)
  target_link_options(quillnest_options INTERFACE -fsanitize=${QUILLNEST_SANITIZE})
endif()
target_compile_definitions(quillnest_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_NO_KEYWORDS)

# Every room and test is compiled with the same set of Qt's modules, so that one precompiled header serves them all.
# What a room really links is what it names under LIBRARIES.
add_library(quillnest_qt INTERFACE)
target_link_libraries(quillnest_qt INTERFACE quillnest_options Qt6::Widgets Qt6::Network QCoro6::Core)
# libpulse asks for this of its users; a precompiled header serves only users with the same set.
target_compile_options(quillnest_qt INTERFACE -D_REENTRANT)

# The headers that nearly every file reads, compiled once for all targets.
file(WRITE ${CMAKE_BINARY_DIR}/pch.cpp "")
add_library(quillnest_pch STATIC ${CMAKE_BINARY_DIR}/pch.cpp)
target_link_libraries(quillnest_pch PRIVATE quillnest_qt)
target_precompile_headers(quillnest_pch PRIVATE
  <QCoroTask> <QByteArray> <QDateTime> <QDir> <QFile> <QImage> <QObject> <QPainter> <QRegularExpression> <QString>
  <QStringList> <QTimer> <QUuid> <QVariant> <QWidget>
  <chrono> <coroutine> <cstdint> <functional> <map> <memory> <mutex> <optional> <span> <string> <thread> <vector>)

# quillnest_room(NAME SOURCES... [SETTINGS HEADER] USES ROOMS... LIBRARIES...)
# A room is a folder under src/, perhaps one below another, and a static library of its own name. It sees the headers of
# the rooms that it names under USES, and of nothing else of ours: each room's include path is its own target's property.
function(quillnest_room name)
  cmake_parse_arguments(ROOM "" "SETTINGS" "SOURCES;USES;LIBRARIES" ${ARGN})
  add_library(${name} STATIC ${ROOM_SOURCES})
  # Headers are included by the folder's path, "room/File.h" or "features/room/File.h"; the generated folder holds a link
  # to this room alone, so an include of a room that is not linked finds nothing.
  cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${CMAKE_SOURCE_DIR}/src OUTPUT_VARIABLE path)
  if(ROOM_SETTINGS)
    # The header's namespace has its name and an operation `all` with the declarations.
    set_property(GLOBAL APPEND PROPERTY QUILLNEST_SETTINGS ${path}/${ROOM_SETTINGS})
  endif()
  set(view ${CMAKE_BINARY_DIR}/rooms/${name})
  cmake_path(GET path PARENT_PATH above)
  file(MAKE_DIRECTORY ${view}/${above})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${view}/${path} SYMBOLIC)
  target_include_directories(${name} PUBLIC ${view})
  target_link_libraries(${name} PUBLIC ${ROOM_USES} ${ROOM_LIBRARIES} PRIVATE quillnest_qt)
  # What it is compiled with is not what its users link: a program without a display must not load Qt's widgets.
  get_target_property(links ${name} INTERFACE_LINK_LIBRARIES)
  list(REMOVE_ITEM links "$<LINK_ONLY:quillnest_qt>")
  set_target_properties(${name} PROPERTIES AUTOMOC ON INTERFACE_LINK_LIBRARIES "${links}")
  target_precompile_headers(${name} REUSE_FROM quillnest_pch)
  if(path MATCHES "^features/")
    target_link_libraries(quillnest_features INTERFACE ${name})
  endif()
endfunction()
