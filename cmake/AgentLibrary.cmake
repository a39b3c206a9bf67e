# TolmarAgent.dll: the agent against the host suite.
enable_language(RC)

# add_agent_dll NAME SOURCES…: NAME.dll, which tells its version.
function(add_agent_dll dll)
  set(resource ${CMAKE_BINARY_DIR}/${dll}.rc)
  configure_file(${CMAKE_SOURCE_DIR}/agent/Version.rc.in ${resource} @ONLY)
  add_library(${dll} SHARED ${ARGN} ${resource})
  set_target_properties(${dll} PROPERTIES PREFIX "")
endfunction()

add_agent_dll(TolmarAgent ${TOLMAR_AGENT_SOURCES})
add_library(TolmarAgent::TolmarAgent ALIAS TolmarAgent)
target_compile_definitions(TolmarAgent PRIVATE "TOLMAR_API=__declspec(dllexport)")
target_compile_features(TolmarAgent INTERFACE cxx_std_17)
target_include_directories(TolmarAgent INTERFACE $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}> $<INSTALL_INTERFACE:include/tolmar>)
# Which host suite it is the package's users need not know: they link against the import library alone.
target_link_libraries(TolmarAgent PRIVATE "$<BUILD_INTERFACE:${TOLMAR_HOST_LIBRARIES}>" PUBLIC JsonCpp::JsonCpp)

# The example in this tree finds the agent as a host program finds the installed package.
file(WRITE ${CMAKE_FIND_PACKAGE_REDIRECTS_DIR}/TolmarAgentConfig.cmake "set(TolmarAgent_RUNTIME_DLLS)\n")
