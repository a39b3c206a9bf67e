# TolmarAgent.dll: the agent against the host suite.
enable_language(RC)
configure_file(agent/Version.rc.in ${CMAKE_BINARY_DIR}/Version.rc @ONLY)

add_library(TolmarAgent SHARED ${TOLMAR_AGENT_SOURCES} ${CMAKE_BINARY_DIR}/Version.rc)
add_library(TolmarAgent::TolmarAgent ALIAS TolmarAgent)
set_target_properties(TolmarAgent PROPERTIES PREFIX "")
target_compile_definitions(TolmarAgent PRIVATE "TOLMAR_API=__declspec(dllexport)")
target_compile_features(TolmarAgent INTERFACE cxx_std_17)
target_include_directories(TolmarAgent INTERFACE $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}> $<INSTALL_INTERFACE:include/tolmar>)
# Which host suite it is the package's users need not know: they link against the import library alone.
target_link_libraries(TolmarAgent PRIVATE "$<BUILD_INTERFACE:${TOLMAR_HOST_LIBRARIES}>" PUBLIC JsonCpp::JsonCpp)

# The example in this tree finds the agent as a host program finds the installed package.
file(WRITE ${CMAKE_FIND_PACKAGE_REDIRECTS_DIR}/TolmarAgentConfig.cmake "set(TolmarAgent_RUNTIME_DLLS)\n")
