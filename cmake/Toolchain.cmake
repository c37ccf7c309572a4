# Warnings, Qt strictness, sanitizers, linker and compiler cache: said once, linked by every target.

add_library(tavrel_flags INTERFACE)
add_library(tavrel::flags ALIAS tavrel_flags)
target_compile_options(tavrel_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast -Woverloaded-virtual -Wnon-virtual-dtor -Werror)
# Some libraries ask for it; said to all, so that they can share precompiled headers.
target_compile_options(tavrel_flags INTERFACE -pthread)
target_compile_definitions(tavrel_flags INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_KEYWORDS QT_NO_FOREACH
  QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_DISABLE_DEPRECATED_BEFORE=0x060400)

if(TAVREL_SANITIZE STREQUAL "address")
  # Without the check of virtual tables: it opens a pipe at every look and reports a bad object when the process has no
  # descriptor left, a state that some tests bring about on purpose.
  target_compile_options(tavrel_flags INTERFACE -fsanitize=address,undefined -fno-sanitize=vptr -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  target_link_options(tavrel_flags INTERFACE -fsanitize=address,undefined)
elseif(TAVREL_SANITIZE STREQUAL "thread")
  # The compiler warns that fences are invisible to the thread sanitizer; Qt's headers use them.
  target_compile_options(tavrel_flags INTERFACE -fsanitize=thread -fno-omit-frame-pointer -Wno-tsan)
  target_link_options(tavrel_flags INTERFACE -fsanitize=thread)
elseif(TAVREL_SANITIZE STREQUAL "fuzzer")
  # The warnings are those of g++; this compiler is only here for its fuzzer.
  target_compile_options(tavrel_flags INTERFACE
    -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize=vptr,function -fno-sanitize-recover=undefined -Wno-everything)
  target_link_options(tavrel_flags INTERFACE -fsanitize=address,undefined)
elseif(TAVREL_SANITIZE)
  message(FATAL_ERROR "TAVREL_SANITIZE is '${TAVREL_SANITIZE}': use address, thread, fuzzer or nothing")
endif()

find_program(TAVREL_CCACHE ccache)
if(TAVREL_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Two trees of the same sources share their objects; precompiled headers count by their content, read once each.
  # Said here, so that it holds however the build is started; as a rule and not as a launcher, since clang-tidy would
  # take the "env" in compile_commands.json for the compiler.
  string(JOIN " " launch env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1 CCACHE_INODECACHE=1
    CCACHE_SLOPPINESS=pch_defines,time_macros ${TAVREL_CCACHE})
  set_property(GLOBAL PROPERTY RULE_LAUNCH_COMPILE "${launch}")
endif()
find_program(TAVREL_MOLD mold)
if(TAVREL_MOLD)
  add_link_options(-fuse-ld=mold)
endif()
