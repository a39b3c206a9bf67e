# What `cmake --install` lays out, and the zip that cpack makes of it. Components: Agent, ReferenceHost, C, Tools.
include(CMakePackageConfigHelpers)
set(config_folder lib/cmake/TolmarAgent)

install(TARGETS TolmarAgent EXPORT AgentTargets COMPONENT Agent)
install(FILES agent/TolmarAgent.h agent/ReportStatus.h agent/ResultCodes.h DESTINATION include/tolmar/agent
        COMPONENT Agent)
install(FILES catalogue/Export.h catalogue/ModuleFile.h catalogue/SoftwareModule.h catalogue/SoftwarePackage.h
        DESTINATION include/tolmar/catalogue COMPONENT Agent)
install(DIRECTORY host DESTINATION include/tolmar COMPONENT Agent FILES_MATCHING PATTERN *.h)
install(DIRECTORY examples/embed/ DESTINATION share/tolmar/example COMPONENT Agent)
install(FILES CHANGELOG.md docs/operations.md docs/packages.md docs/security.md cmake/package/third-party.md
        DESTINATION share/tolmar COMPONENT Agent)

install(TARGETS TolmarReferenceHost EXPORT ReferenceHostTargets COMPONENT ReferenceHost)
install(FILES reference_host/Startup.h DESTINATION include/tolmar/reference_host COMPONENT ReferenceHost)
install(TARGETS tolmarctl tolmarpack TolmarHost COMPONENT Tools)
if(TARGET cloudsim)
  install(TARGETS cloudsim COMPONENT Tools)
endif()

if(TARGET TolmarAgentC)
  install(TARGETS TolmarAgentC COMPONENT C)
  install(FILES c_interface/TolmarAgentC.def DESTINATION lib COMPONENT C)
  install(FILES c_interface/tolmar/agent.h DESTINATION include/tolmar COMPONENT C)
  install(FILES docs/embedding.md DESTINATION share/tolmar COMPONENT C)
  install(DIRECTORY bindings DESTINATION share/tolmar COMPONENT C)
  install(DIRECTORY examples/c examples/go examples/csharp DESTINATION share/tolmar/examples COMPONENT C)
endif()

# What the DLLs need beside them. A jsoncpp that was built for the DLLs goes with them, since a host has to use that one.
if(MSVC)
  set(CMAKE_INSTALL_SYSTEM_RUNTIME_LIBS_SKIP TRUE)
  include(InstallRequiredSystemLibraries)
  install(PROGRAMS ${CMAKE_INSTALL_SYSTEM_RUNTIME_LIBS} DESTINATION bin COMPONENT Agent)
  install(FILES $<TARGET_RUNTIME_DLLS:TolmarReferenceHost> DESTINATION bin COMPONENT Agent)
else()
  list(TRANSFORM TOLMAR_RUNTIME_DLLS PREPEND ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/)
  install(PROGRAMS ${TOLMAR_RUNTIME_DLLS} DESTINATION bin COMPONENT Agent)
endif()
if(DEFINED TOLMAR_DEPS)
  install(DIRECTORY ${TOLMAR_DEPS}/include/json DESTINATION include COMPONENT Agent)
  install(DIRECTORY ${TOLMAR_DEPS}/lib/cmake/jsoncpp DESTINATION lib/cmake COMPONENT Agent)
  install(FILES ${TOLMAR_DEPS}/lib/libjsoncpp.a DESTINATION lib COMPONENT Agent)
endif()

# licence NAME FILES…: the text that has to go with what is shipped; the first of the files that is there.
function(licence name)
  foreach(file ${ARGN})
    if(EXISTS ${file})
      install(FILES ${file} DESTINATION share/tolmar/licences RENAME ${name}.txt COMPONENT Agent)
      return()
    endif()
  endforeach()
  message(WARNING "The package will lack the licence text of ${name}")
endfunction()

set(vcpkg ${VCPKG_INSTALLED_DIR}/${VCPKG_TARGET_TRIPLET}/share)
set(debian /usr/share/doc)
licence(jsoncpp ${vcpkg}/jsoncpp/copyright ${debian}/libjsoncpp-dev/copyright)
licence(cli11 ${vcpkg}/cli11/copyright ${debian}/libcli11-dev/copyright)
licence(utfcpp ${vcpkg}/utfcpp/copyright ${debian}/libutfcpp-dev/copyright)
if(MINGW)
  licence(cpp-httplib ${debian}/libcpp-httplib-dev/copyright)
  licence(zlib ${debian}/libz-mingw-w64-dev/copyright)
  licence(gcc-runtime ${debian}/gcc-mingw-w64-base/copyright)
  licence(gpl-3 /usr/share/common-licenses/GPL-3)
  licence(mingw-w64 ${debian}/mingw-w64-common/copyright)
endif()

install(EXPORT AgentTargets NAMESPACE TolmarAgent:: DESTINATION ${config_folder} COMPONENT Agent)
install(EXPORT ReferenceHostTargets NAMESPACE TolmarAgent:: DESTINATION ${config_folder} COMPONENT ReferenceHost)
configure_package_config_file(cmake/package/Config.cmake.in TolmarAgentConfig.cmake
                              INSTALL_DESTINATION ${config_folder})
write_basic_package_version_file(TolmarAgentConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/TolmarAgentConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/TolmarAgentConfigVersion.cmake
        DESTINATION ${config_folder} COMPONENT Agent)

set(CPACK_GENERATOR ZIP)
set(runtime msvc)
if(MINGW)
  set(runtime mingw)
endif()
set(CPACK_PACKAGE_FILE_NAME TolmarAgent-${PROJECT_VERSION}-windows-x64-${runtime})
set(CPACK_PACKAGE_VENDOR Tolmar)
include(CPack)
