# TolmarAgent.dll: the agent against the host suite.
enable_language(RC)
configure_file(agent/Version.rc.in ${CMAKE_BINARY_DIR}/Version.rc @ONLY)

add_library(TolmarAgent SHARED ${TOLMAR_AGENT_SOURCES} ${CMAKE_BINARY_DIR}/Version.rc)
set_target_properties(TolmarAgent PROPERTIES PREFIX "")
target_compile_definitions(TolmarAgent PRIVATE "TOLMAR_API=__declspec(dllexport)")
target_include_directories(TolmarAgent INTERFACE ${CMAKE_SOURCE_DIR})
target_link_libraries(TolmarAgent PRIVATE ${TOLMAR_HOST_LIBRARIES} PUBLIC JsonCpp::JsonCpp)
