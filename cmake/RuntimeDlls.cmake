# The compiler's runtime DLLs stand beside the programs: libstdc++ is shared, so that standard objects and exceptions
# cross the DLLs safely. GCC knows where they are, also when another compiler builds.
set(gcc ${CMAKE_CXX_COMPILER})
if(TOLMAR_GCC)
  set(gcc ${TOLMAR_GCC})
endif()
set(TOLMAR_RUNTIME_DLLS libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
foreach(dll ${TOLMAR_RUNTIME_DLLS})
  execute_process(COMMAND ${gcc} -print-file-name=${dll}
                  OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
  file(COPY ${path} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY} FOLLOW_SYMLINK_CHAIN)
endforeach()
