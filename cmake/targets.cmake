# Settings that every target of the project shares.

add_library(project_settings INTERFACE)
target_include_directories(project_settings INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(project_settings INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wno-sign-conversion -Wold-style-cast -Wnon-virtual-dtor
  -Wcast-align -Woverloaded-virtual -Wnull-dereference)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # g++ 12 sees null dereferences in libstdc++'s own inlined code.
  target_compile_options(project_settings INTERFACE -Wno-null-dereference)
endif()
if(MINGW)
  # g++ aligns the stack for 16 bytes there, and trusts in more where it keeps vectors.
  target_compile_options(project_settings INTERFACE -Wa,-muse-unaligned-vector-move)
endif()
if(GIF_SANITIZE)
  target_compile_options(project_settings INTERFACE
    -fsanitize=${GIF_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(project_settings INTERFACE -fsanitize=${GIF_SANITIZE})
  if(GIF_FUZZ)  # the comparisons are with bytes, which are guessed sooner than they are followed
    target_compile_options(project_settings INTERFACE -fno-sanitize-coverage=trace-cmp)
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # Host and plugin call each other through pointers of their own types for the same C form.
    target_compile_options(project_settings INTERFACE -fno-sanitize=function)
  endif()
endif()

if(GIF_COVERAGE)  # the folders whose runs are counted, by clang: see tools/coverage
  target_link_options(project_settings INTERFACE -fprofile-instr-generate)
endif()

# A folder's code as a static library: folder_library(NAME SOURCES... LINK TARGETS...)
function(folder_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINK")
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC project_settings ${arg_LINK})
  if(name IN_LIST GIF_COVERAGE)
    target_compile_options(${name} PRIVATE -fprofile-instr-generate -fcoverage-mapping)
  endif()
endfunction()
