#include "agent/TolmarAgent.h"
#include "c_interface/Call.h"
#include "c_interface/Document.h"
#include "c_interface/Events.h"
#include "c_interface/Installation.h"

using namespace c_interface;

namespace {

/// @param ask in, asks the agent for a document. @param reply out, the document.
template <typename Ask>
std::uint32_t Query(char** reply, const Ask& ask) {
  if (reply != nullptr) *reply = nullptr;
  return WithAgent([&](TolmarAgent& agent) {
    Needed(reply);
    Json::Value document;
    const unsigned long code = ask(agent, document);
    Hand(document, reply);
    return code;
  });
}

/// @param work in, has the agent work on the titles. @param result out, what has become of them.
template <typename Work>
std::uint32_t WithTitles(const char* titles, char** result, const Work& work) {
  return Query(result, [&](TolmarAgent& agent, Json::Value& document) {
    document = Titles(titles);
    return static_cast<unsigned long>(work(agent, document));
  });
}

}  // namespace

uint32_t tolmar_has_entitled_software(uint8_t* entitled) {
  return WithAgent(
      [&](TolmarAgent& agent) { return agent.HasEntitledSoftware(*Needed(entitled)); });
}

uint32_t tolmar_get_entitled_software(char** titles) {
  return Query(titles, [](TolmarAgent& agent, Json::Value& document) {
    return agent.GetEntitledSoftware(document);
  });
}

uint32_t tolmar_get_entitled_software_status(const char* titles, void* cancel,
                                             int32_t preinstall_only, char** result) {
  return WithTitles(titles, result, [&](TolmarAgent& agent, Json::Value& document) {
    return agent.GetEntitledSoftwareStatus(document, CancelHandle(cancel), preinstall_only != 0);
  });
}

uint32_t tolmar_get_title_status(const char* titles, uint32_t index, void* cancel,
                                 int32_t preinstall_only, char** result) {
  return WithTitles(titles, result, [&](TolmarAgent& agent, Json::Value& document) {
    if (index >= document["swList"].size()) throw Refusal{TOLMAR_BAD_TITLES};
    agent.GetEntitledSoftwareStatusThreadRtn(&document, CancelHandle(cancel),
                                             static_cast<int>(index), preinstall_only != 0);
    return TOLMAR_OK;
  });
}

uint32_t tolmar_install_entitled_software(const char* titles, const tolmar_install_options* options,
                                          char** result) {
  return WithTitles(titles, result, [&](TolmarAgent& agent, Json::Value& document) {
    return Install(agent, document, Known(options));
  });
}

uint32_t tolmar_get_install_status(const char* titles, char** result) {
  return WithTitles(titles, result, [](TolmarAgent& agent, Json::Value& document) {
    return agent.GetInstallEntitledSoftwareStatus(document);
  });
}

uint32_t tolmar_get_download_files(const char* l1_fru_pn, const char* module_fru_pn, char** files) {
  return Query(files, [&](TolmarAgent& agent, Json::Value& document) {
    return agent.GetDownloadFiles(document, Wide(l1_fru_pn), Wide(module_fru_pn));
  });
}

uint32_t tolmar_report_download_progress(const char* l1_fru_pn, const char* module_fru_pn,
                                         int32_t action, const char* message, const char* file_name,
                                         const char* file_url, int32_t progress,
                                         const char* device_date) {
  return WithAgent([&](TolmarAgent& agent) {
    return agent.ReportDownloadProgress(Wide(l1_fru_pn), Wide(module_fru_pn), action, Wide(message),
                                        Wide(file_name), Wide(file_url), progress,
                                        Wide(device_date));
  });
}

uint32_t tolmar_report_install_progress(const char* l1_fru_pn, const char* module_fru_pn,
                                        int32_t action, const char* message,
                                        const char* device_date) {
  return WithAgent([&](TolmarAgent& agent) {
    return agent.ReportInstallProgress(Wide(l1_fru_pn), Wide(module_fru_pn), action, Wide(message),
                                       Wide(device_date));
  });
}
