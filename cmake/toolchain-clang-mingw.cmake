# The Windows lane by clang, as a second opinion on the sources: clang compiles, with the headers and the C++ library of
# MinGW's GCC, and MinGW's linker links. What it makes works together with what that GCC makes.
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw.cmake)
set(TOLMAR_GCC ${CMAKE_CXX_COMPILER})
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET ${triplet})
set(CMAKE_CXX_COMPILER_TARGET ${triplet})

# gcc_path OUT QUESTION: where GCC keeps something; clang cannot read the names of Debian's folders.
function(gcc_path out question)
  execute_process(COMMAND ${TOLMAR_GCC} -print-${question} OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE
                  COMMAND_ERROR_IS_FATAL ANY)
  cmake_path(NORMAL_PATH path)
  set(${out} ${path} PARENT_SCOPE)
endfunction()

gcc_path(headers file-name=include/c++)
gcc_path(libgcc libgcc-file-name)
gcc_path(crt file-name=crt2.o)
gcc_path(linker prog-name=ld)
cmake_path(GET libgcc PARENT_PATH gcc_libraries)
cmake_path(GET crt PARENT_PATH mingw_libraries)
cmake_path(GET mingw_libraries PARENT_PATH mingw)

# Windows' own headers stand behind clang's, which bring its intrinsics. Thread-local storage is GCC's kind, since the C++
# library has some; and like that GCC, every program has the threads library.
set(CMAKE_C_FLAGS_INIT "-nostdlibinc -idirafter ${mingw}/include -femulated-tls")
set(CMAKE_CXX_FLAGS_INIT
    "-nostdinc++ -isystem ${headers} -isystem ${headers}/${triplet} -isystem ${headers}/backward ${CMAKE_C_FLAGS_INIT}")
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "--ld-path=${linker} -B${gcc_libraries} -B${mingw_libraries} -L${gcc_libraries}\
 -L${mingw_libraries} -pthread -Wno-unused-command-line-argument")
endforeach()
