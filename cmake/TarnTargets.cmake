# Helpers shared by every folder's CMakeLists.txt.

# Adds each listed folder that has a CMakeLists.txt of its own.
function(tarn_add_folders)
  foreach(folder IN LISTS ARGN)
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/CMakeLists.txt)
      add_subdirectory(${folder})
    endif()
  endforeach()
endfunction()

# Precompiled headers: the standard and Qt Core headers that nearly every file
# includes are parsed once for each library and test program rather than once
# for each file (test programs add GoogleTest).  Each target compiles its own
# with its own flags, so the sanitizer builds get theirs.  ccache keeps files
# built with them only when told to overlook the header's time stamps, which
# the launcher below does.  Off by default: with a warm ccache from builds
# without them, switching them on costs one full build; they pay on machines
# whose cache is cold (TARN_PCH=ON .ci/run).
option(TARN_PCH "Precompile the standard and Qt headers of each target" OFF)
set(TARN_PCH_HEADERS
  <algorithm> <cmath> <cstdint> <cstring> <functional> <map> <memory> <string>
  <string_view> <utility> <vector> <QByteArray> <QHash> <QList> <QString> <QStringList>)

function(tarn_precompile target)
  if(TARN_PCH)
    target_precompile_headers(${target} PRIVATE ${TARN_PCH_HEADERS} ${ARGN})
    if(CCACHE_PROGRAM)
      set_property(TARGET ${target} PROPERTY CXX_COMPILER_LAUNCHER
        env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        ${CCACHE_PROGRAM})
    endif()
  endif()
endfunction()

# Warnings and sanitizer flags for one of our targets.
function(tarn_target_options target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
  if(TARN_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    target_link_options(${target} PRIVATE -fsanitize=address,undefined)
  endif()
  # In a clang fuzz build every target carries the fuzzer's coverage
  # instrumentation and the sanitizers, so that the fuzz targets see into the
  # libraries they call.
  if(TARN_BUILD_FUZZ AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=address,undefined)
  endif()
  if(TARN_TSAN)
    target_compile_options(${target} PRIVATE -fsanitize=thread -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=thread)
  endif()
endfunction()

# tarn_add_library(name SOURCES ... LINKS ...): a static library of one source folder.
function(tarn_add_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${ARG_LINKS})
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  tarn_target_options(${name})
  tarn_precompile(${name})
endfunction()

# tarn_add_test(name SOURCES ... LINKS ... [GUI] [QTEST]): a test program
# registered with CTest.  GoogleTest programs get a main that makes the Qt
# application object first (QApplication with GUI, on the offscreen platform
# unless QT_QPA_PLATFORM says otherwise); QTEST programs bring their own main.
function(tarn_add_test name)
  cmake_parse_arguments(ARG "GUI;QTEST" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  target_link_libraries(${name} PRIVATE ${ARG_LINKS})
  tarn_target_options(${name})
  if(ARG_QTEST)
    tarn_precompile(${name})
    target_link_libraries(${name} PRIVATE Qt6::Test)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES ENVIRONMENT QT_QPA_PLATFORM=offscreen TIMEOUT 600)
  else()
    tarn_precompile(${name} <gtest/gtest.h>)
    if(ARG_GUI)
      target_link_libraries(${name} PRIVATE tarn_gtest_main_gui)
    else()
      target_link_libraries(${name} PRIVATE tarn_gtest_main)
    endif()
    # A test that waits on a window nobody closes fails after ten minutes
    # instead of holding the run.
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST
      PROPERTIES ENVIRONMENT QT_QPA_PLATFORM=offscreen TIMEOUT 600)
  endif()
endfunction()
