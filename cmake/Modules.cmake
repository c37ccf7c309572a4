# The modules and the arrows between them.
#
# Each row reads: folder | folders whose headers it may include. An arrow that is not here does not link and
# is refused by cmake/CheckArrows.cmake, which the tests run over every #include of the tree.
# A folder with windows is two targets: `tavrel::x` (Qt Core and Gui) and `tavrel::x_ui` (Widgets).

set(TAVREL_ARROWS
  "base|"
  "settings|base"
  "record|base"
  "platform|base settings"
  "platform/synthetic|base settings platform"
  "platform/unsupported|base settings platform"
  "platform/linux|base settings platform platform/unsupported"
  "net|base"
  "process|base settings platform"
  "annotate|base"
  "ui|base settings platform annotate"
  "output|base settings"
  "capture|base settings platform annotate output"
  "overlay|base settings platform annotate output capture ui"
  "diagnostics|base settings platform platform/synthetic platform/unsupported process annotate ui overlay"
  "app|base settings platform platform/synthetic net process annotate ui output capture overlay diagnostics")

function(tavrel_allowed folder out)
  foreach(row IN LISTS TAVREL_ARROWS)
    if(row MATCHES "^([^|]*)\\|(.*)$" AND CMAKE_MATCH_1 STREQUAL folder)
      separate_arguments(allowed UNIX_COMMAND "${CMAKE_MATCH_2}")
      set(${out} "${allowed}" PARENT_SCOPE)
      return()
    endif()
  endforeach()
  message(FATAL_ERROR "folder '${folder}' has no row in TAVREL_ARROWS")
endfunction()

# tavrel_module(overlay HEADERS a.h SOURCES a.cpp USES base settings QT Gui PRIVATE lib)
# tavrel_module(overlay_ui FOLDER overlay ...)   the widgets of the same folder
#
# `platform/linux` becomes the target tavrel::platform_linux. USES names targets; the folder behind each one
# has to be an allowed arrow of FOLDER.
function(tavrel_module name)
  cmake_parse_arguments(M "" "FOLDER" "HEADERS;SOURCES;USES;QT;PRIVATE" ${ARGN})
  if(M_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "tavrel_module(${name}): unknown ${M_UNPARSED_ARGUMENTS}")
  endif()
  if(NOT M_FOLDER)
    set(M_FOLDER ${name})
  endif()
  string(REPLACE "/" "_" target ${name})
  tavrel_allowed(${M_FOLDER} allowed)
  if(M_SOURCES)
    add_library(tavrel_${target} STATIC ${M_SOURCES} ${M_HEADERS})
    set(scope PUBLIC)
    target_link_libraries(tavrel_${target} PRIVATE tavrel::flags ${M_PRIVATE})
    set_property(GLOBAL APPEND PROPERTY TAVREL_COMPILED_TARGETS tavrel_${target})
    if("Widgets" IN_LIST M_QT)
      tavrel_use_precompiled(tavrel_${target} widgets)
    else()
      tavrel_use_precompiled(tavrel_${target} core)
    endif()
  else()
    add_library(tavrel_${target} INTERFACE)
    set(scope INTERFACE)
  endif()
  add_library(tavrel::${target} ALIAS tavrel_${target})
  target_include_directories(tavrel_${target} ${scope} ${PROJECT_SOURCE_DIR}/src)
  foreach(used IN LISTS M_USES)
    string(REGEX REPLACE "_(ui|widgets)$" "" folder ${used})
    if(NOT folder IN_LIST allowed AND NOT folder STREQUAL M_FOLDER)
      message(FATAL_ERROR "tavrel_module(${name}): the arrow ${M_FOLDER} -> ${folder} is not in TAVREL_ARROWS")
    endif()
    string(REPLACE "/" "_" used ${used})
    target_link_libraries(tavrel_${target} ${scope} tavrel::${used})
  endforeach()
  foreach(component IN LISTS M_QT)
    target_link_libraries(tavrel_${target} ${scope} Qt6::${component})
  endforeach()
  set_property(GLOBAL APPEND PROPERTY TAVREL_TRANSLATED_SOURCES ${M_SOURCES})
endfunction()

# tavrel_test(annotate shape_document USES annotate QT Gui)   tests/annotate/test_shape_document.cpp, offscreen
# tavrel_test(... LIVE openbox)   runs under a virtual X server of its own, see tests/support/with_display.sh;
#                                 LIVE is one of: openbox, bare (no window manager), picom (openbox + compositor)
# tavrel_test(... VARIANT ratio2 ENVIRONMENT QT_SCALE_FACTOR=2)   the same program once more, in other surroundings
function(tavrel_test folder name)
  cmake_parse_arguments(T "" "LIVE;SCREEN;VARIANT" "SOURCES;USES;QT;PRIVATE;ENVIRONMENT" ${ARGN})
  if(T_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "tavrel_test(${name}): unknown ${T_UNPARSED_ARGUMENTS}")
  endif()
  string(REPLACE "/" "_" prefix ${folder})
  set(target test_${prefix}_${name})
  if(NOT TARGET ${target})
    add_executable(${target} test_${name}.cpp ${T_SOURCES})
    target_link_libraries(${target} PRIVATE tavrel::flags tavrel_test_support ${T_PRIVATE})
    tavrel_use_precompiled(${target} test)
    # Hardly any test has a header to be moc'ed; the file for those is empty and loading Qt for it a third of a second.
    set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/${target}_autogen/mocs_compilation.cpp
      PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
    set_property(GLOBAL APPEND PROPERTY TAVREL_COMPILED_TARGETS ${target})
    foreach(used IN LISTS T_USES)
      string(REPLACE "/" "_" used ${used})
      target_link_libraries(${target} PRIVATE tavrel::${used})
    endforeach()
    foreach(component IN LISTS T_QT)
      target_link_libraries(${target} PRIVATE Qt6::${component})
    endforeach()
  endif()
  set(common LANG=C.UTF-8 LC_ALL=C.UTF-8 TZ=UTC QT_HASH_SEED=0 QT_SCALE_FACTOR= QT_LOGGING_RULES=
      "ASAN_OPTIONS=detect_leaks=0" "UBSAN_OPTIONS=print_stacktrace=1"
      "TSAN_OPTIONS=die_after_fork=0 suppressions=${PROJECT_SOURCE_DIR}/tests/support/tsan.supp" ${T_ENVIRONMENT})
  # A warning that no test announces with QTest::ignoreMessage is a failure. Excepted are those of the toolkit's own
  # categories ("qt.") and what the offscreen platform says of itself ("This plugin does not support").
  set(unexpected "QWARN  :[^\n]*\\) ([^Tq]|T[^h]|Th[^i]|Thi[^s]|q[^t]|qt[^.])" "QCRITICAL")
  set(variant "")
  if(T_VARIANT)
    set(variant "+${T_VARIANT}")
  endif()
  if(T_LIVE)
    if(NOT T_SCREEN)
      set(T_SCREEN 1920x1080)
    endif()
    set(label ${prefix}.${name}@${T_LIVE}${variant})
    add_test(NAME ${label} COMMAND ${PROJECT_SOURCE_DIR}/tests/support/with_display.sh
      --wm ${T_LIVE} --screen ${T_SCREEN} $<TARGET_FILE:${target}>)
    set_tests_properties(${label} PROPERTIES LABELS live TIMEOUT 300 FAIL_REGULAR_EXPRESSION "${unexpected}"
      ENVIRONMENT "${common};QT_QPA_PLATFORM=xcb")
  else()
    set(label ${prefix}.${name}${variant})
    add_test(NAME ${label} COMMAND ${target})
    set_tests_properties(${label} PROPERTIES LABELS unit TIMEOUT 120 FAIL_REGULAR_EXPRESSION "${unexpected}"
      ENVIRONMENT "${common};QT_QPA_PLATFORM=offscreen")
  endif()
endfunction()

# tavrel_bench(annotate shape_document USES annotate)   bench/bench_annotate_shape_document.cpp, Google Benchmark
# tavrel_bench(... LIVE bare SCREEN 3840x2160)          the same under a virtual X server
function(tavrel_bench folder name)
  cmake_parse_arguments(B "" "LIVE;SCREEN" "SOURCES;USES;QT;PRIVATE" ${ARGN})
  if(B_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "tavrel_bench(${name}): unknown ${B_UNPARSED_ARGUMENTS}")
  endif()
  string(REPLACE "/" "_" prefix ${folder})
  set(target bench_${prefix}_${name})
  add_executable(${target} ${target}.cpp ${B_SOURCES})
  set_property(GLOBAL APPEND PROPERTY TAVREL_COMPILED_TARGETS ${target})
  target_link_libraries(${target} PRIVATE tavrel::flags benchmark::benchmark ${B_PRIVATE})
  foreach(used IN LISTS B_USES)
    string(REPLACE "/" "_" used ${used})
    target_link_libraries(${target} PRIVATE tavrel::${used})
  endforeach()
  foreach(component IN LISTS B_QT)
    target_link_libraries(${target} PRIVATE Qt6::${component})
  endforeach()
  if(B_LIVE)
    set(how "live ${B_LIVE} ${B_SCREEN}")
  else()
    set(how "offscreen - -")
  endif()
  set_property(GLOBAL APPEND_STRING PROPERTY TAVREL_BENCHMARKS "${target} ${how}\n")
endfunction()
