# The agent's sources, for the DLL and for the tests.
set(TOLMAR_AGENT_SOURCES
    agent/AgentLog.cpp
    agent/Endpoint.cpp
    agent/EntitlementQueries.cpp
    agent/InstalledState.cpp
    agent/Lifecycle.cpp
    agent/Preinstall.cpp
    agent/RegistryFlag.cpp
    catalogue/CatalogueJson.cpp
    catalogue/FileKind.cpp
    catalogue/JsonText.cpp
    catalogue/ModuleFile.cpp
    catalogue/SoftwareModule.cpp
    catalogue/SoftwarePackage.cpp
    install/CheckScripts.cpp
    install/DownloadFolder.cpp
    install/FileListQuery.cpp
    install/ModuleInstall.cpp
    install/Orchestration.cpp
    install/PackageDownload.cpp
    install/ScriptCommand.cpp
    progress/CurrentInstall.cpp
    progress/DownloadEvents.cpp
    progress/ProgressReports.cpp
    progress/UrlRenewal.cpp
    service/Framing.cpp
    service/ReplyParsers.cpp
    service/RequestBody.cpp
    service/Requests.cpp
    service/RetryLoop.cpp
    service/TokenSource.cpp)
list(TRANSFORM TOLMAR_AGENT_SOURCES PREPEND ${CMAKE_SOURCE_DIR}/)

# Those of the layer for hosts in any language.
set(TOLMAR_C_INTERFACE_SOURCES Basics.cpp Document.cpp Events.cpp Installation.cpp Lifecycle.cpp Operations.cpp)
list(TRANSFORM TOLMAR_C_INTERFACE_SOURCES PREPEND ${CMAKE_SOURCE_DIR}/c_interface/)
