# What every source is compiled with, by compiler.
if(MSVC)
  # 4251, 4275: the exported classes have members of the C++ library. Host and DLL share one of the same version.
  add_compile_options(/W4 /permissive- /utf-8 /wd4251 /wd4275)
  add_compile_definitions(_CRT_SECURE_NO_WARNINGS)
else()
  # The same sources give the same bytes, in whatever folder and whenever they are built.
  add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.)
  if(MINGW)
    add_link_options(-Wl,--no-insert-timestamp)
  endif()
  add_compile_options(-Wall -Wextra -Wshadow -Wconversion -Werror=return-type)
endif()
if(WIN32)
  # windows.h would define min and max as macros.
  add_compile_definitions(NOMINMAX)
endif()

# For whoever works on this repository; who embeds it may have a compiler that warns of more.
option(TOLMAR_WERROR "Warnings are errors" OFF)
set(CMAKE_COMPILE_WARNING_AS_ERROR ${TOLMAR_WERROR})
