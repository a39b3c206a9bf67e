#include "reference_host/configuration/Keys.h"

#include <algorithm>
#include <type_traits>

#include "host/common/Text.h"
#include "reference_host/configuration/Values.h"

namespace refhost {

namespace {

using C = Configuration;

constexpr std::uint64_t Hour = 3600;
constexpr std::uint64_t Day = 24 * Hour;
constexpr std::uint64_t Week = 7 * Day;
/// Below the one no package is delivered; up to the other every JSON writer is exact.
constexpr std::uint64_t MinSizeLimit = 1024;
constexpr std::uint64_t MaxSizeLimit = (1ull << 53) - 1;

template <auto Member, auto Read>
void Take(const Key& key, const Json::Value& value, C& into) {
  into.*Member = static_cast<std::remove_cvref_t<decltype(into.*Member)>>(Read(key, value));
}

Json::Value AsJson(bool flag) { return flag; }
Json::Value AsJson(unsigned int number) { return number; }
Json::Value AsJson(std::uint64_t number) { return Json::UInt64{number}; }
Json::Value AsJson(double number) { return number; }
Json::Value AsJson(const std::string& text) { return text; }
Json::Value AsJson(const std::wstring& text) { return ZLT::String::UTF16ToUTF8(text); }
Json::Value AsJson(const MaintenanceWindow& window) { return TextOfWindow(window); }

template <typename Element>
Json::Value AsJson(const std::vector<Element>& list) {
  Json::Value values(Json::arrayValue);
  for (const Element& element : list) values.append(AsJson(element));
  return values;
}

template <auto Member>
Json::Value Show(const C& of) {
  return AsJson(of.*Member);
}

constexpr const char* Sessions = "user|service";
constexpr const char* Installs = "all|preinstall|none";

template <auto Member, const auto& Words>
Json::Value ShowWord(const C& of) {
  return WordAt(Words, static_cast<int>(of.*Member));
}

template <auto Member, const auto& Words>
constexpr Key Word(const char* name, const char* meaning) {
  return {.name = name,
          .meaning = meaning,
          .take = Take<Member, WordOf>,
          .show = ShowWord<Member, Words>,
          .type = KeyType::Word,
          .words = Words};
}

template <auto Member>
constexpr Key Number(const char* name, std::uint64_t least, std::uint64_t most,
                     const char* meaning) {
  return {.name = name,
          .meaning = meaning,
          .take = Take<Member, NumberOf>,
          .show = Show<Member>,
          .type = KeyType::Number,
          .least = least,
          .most = most};
}

template <auto Member, auto Read>
constexpr Key Plain(const char* name, KeyType type, const char* meaning) {
  return {.name = name,
          .meaning = meaning,
          .take = Take<Member, Read>,
          .show = Show<Member>,
          .type = type};
}

constexpr Key Mandatory(Key key) {
  key.isMandatory = true;
  return key;
}

constexpr Key Secret(Key key) {
  key.isSecret = true;
  return key;
}

constexpr Key Otherwise(Key key, const char* otherwise) {
  key.otherwise = otherwise;
  return key;
}

constexpr Key Table[] = {
    Mandatory(Plain<&C::baseUrl, UrlOf>("baseUrl", KeyType::Text, "The cloud service")),
    Mandatory(Plain<&C::realm, TextOf>("realm", KeyType::Text, "Realm of the service")),
    Mandatory(Plain<&C::deviceId, TextOf>("deviceId", KeyType::Text,
                                          "The device, as the service knows it")),
    Secret(Mandatory(Plain<&C::sessionToken, TextOf>(
        "sessionToken", KeyType::Text, "A secret; tolmarctl config set-token keeps it better"))),
    Mandatory(Plain<&C::tokenUrl, UrlOf>("tokenUrl", KeyType::Text,
                                         "Where the session token is exchanged")),
    Plain<&C::registered, FlagOf>("registered", KeyType::Flag,
                                  "Whether the device is registered with the service"),
    Otherwise(Plain<&C::proxy, ProxyOf>("proxy", KeyType::Text,
                                        "Host and port; without it: the machine's settings"),
              "the machine's settings"),
    Otherwise(Plain<&C::downloadFolder, FolderOfKey>("downloadFolder", KeyType::Text,
                                                     "Deleted as a whole after every title"),
              "%ProgramData%\\Tolmar\\Downloads"),
    Otherwise(Plain<&C::logFolder, FolderOfKey>("logFolder", KeyType::Text, "Where the logs go"),
              "%ProgramData%\\Tolmar\\Logs"),
    Plain<&C::requireSignedPackages, FlagOf>("requireSignedPackages", KeyType::Flag,
                                             "Unsigned packages are refused"),
    Plain<&C::trustedPublishers, ThumbprintsOf>(
        "trustedPublishers", KeyType::Texts,
        "SHA-256 thumbprints; empty: any that the machine trusts"),
    Number<&C::processTimeoutSeconds>("processTimeoutSeconds", 1, Day, "For a check script"),
    Otherwise(Number<&C::maxCheckScripts>("maxCheckScripts", 1, 1000,
                                          "At once; without it: as many as processors"),
              "as many as processors"),
    Number<&C::cancelledCheckGraceSeconds>("cancelledCheckGraceSeconds", 0, Hour,
                                           "For the check after a cancelled installation"),
    Number<&C::installerTimeoutSeconds>("installerTimeoutSeconds", 1, Day, "For an installer"),
    Word<&C::installerSession, Sessions>("installerSession",
                                         "Where installers run when the host is a service"),
    Number<&C::leaseWaitSeconds>("leaseWaitSeconds", 0, Day, "For another process's installation"),
    Number<&C::requestTimeoutSeconds>("requestTimeoutSeconds", 1, Hour,
                                      "For each step of a request to the service"),
    Number<&C::downloadStallSeconds>("downloadStallSeconds", 1, Day,
                                     "Without a byte, a download has failed"),
    Number<&C::downloadPatienceSeconds>("downloadPatienceSeconds", 0, Day,
                                        "For better times: network, server, queue"),
    Number<&C::fileInUseSeconds>("fileInUseSeconds", 0, Hour,
                                 "For a downloaded file that another program has open"),
    Number<&C::maxFileBytes>("maxFileBytes", MinSizeLimit, MaxSizeLimit, "Of one file"),
    Number<&C::maxUnpackedBytes>("maxUnpackedBytes", MinSizeLimit, MaxSizeLimit, "Of one package"),
    Number<&C::logMaxBytes>("logMaxBytes", 1024, 1u << 30, "Then a new log begins"),
    Plain<&C::retryWaitScale, ShareOf>("retryWaitScale", KeyType::Share, "Test labs only"),
    Word<&C::serviceInstalls, Installs>("serviceInstalls",
                                        "Which missing titles the service installs by itself"),
    Number<&C::pollSeconds>("pollSeconds", 1, Week,
                            "From one run of the service to the next, at the least"),
    Number<&C::pollSpreadSeconds>("pollSpreadSeconds", 0, Week, "Up to so many more, at random"),
    Plain<&C::maintenanceWindows, WindowsOf>(
        "maintenanceWindows", KeyType::Texts,
        "When the service may start installers, by the wall clock; empty: always"),
    Plain<&C::downloadOutsideWindows, FlagOf>("downloadOutsideWindows", KeyType::Flag,
                                              "Packages may be fetched outside of them"),
    Plain<&C::deferWhileRunning, ProgramsOf>("deferWhileRunning", KeyType::Texts,
                                             "While one of these programs runs, installers wait"),
    Number<&C::deferSeconds>("deferSeconds", 1, Day, "Then it is looked whether they still run"),
    Number<&C::titleAttempts>("titleAttempts", 1, 100,
                              "At a failing title; then its list must change"),
    Number<&C::titlePauseSeconds>("titlePauseSeconds", 0, Week,
                                  "Behind a title's first failure; four times as long behind each "
                                  "further one"),
};

}  // namespace

std::span<const Key> AllKeys() { return Table; }

const Key* FindKey(const std::string& name) {
  const auto* found = std::find_if(std::begin(Table), std::end(Table),
                                   [&name](const Key& key) { return key.name == name; });
  return found == std::end(Table) ? nullptr : found;
}

}  // namespace refhost
