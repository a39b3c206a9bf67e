#include "reference_host/doctor/Questions.h"

#include <windows.h>

#include <ctime>

#include "host/common/Text.h"
#include "host/session/Tessary.h"
#include "reference_host/base/ModulePin.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/download/BitsLeftovers.h"
#include "reference_host/download/FilePlace.h"
#include "reference_host/http/HttpExchange.h"

namespace refhost {

namespace {

ServiceAnswer AskService() {
  HttpExchange exchange;
  const std::wstring url = ZLT::String::UTF8ToUTF16(Settings().baseUrl);
  if (const unsigned long error = exchange.Send({.verb = L"HEAD", .url = url, .headers = {}}))
    return {error};
  ServiceAnswer answer{exchange.Status()};
  if (const auto date = exchange.ServerTime()) answer.secondsAhead = std::time(nullptr) - *date;
  return answer;
}

unsigned long AskForToken() {
  std::string jwt;
  return Tessary::GetInstance()->GetJwtFromServer(Settings().sessionToken, jwt);
}

BitsAnswer AskBits() {
  const ComApartment apartment;
  BitsJob::Manager manager;
  BitsAnswer answer{BitsJob::Connect(manager)};
  if (SUCCEEDED(answer.result)) {
    answer.result = CountJobsInto(manager, FilePlace::ArrivalFolder(), answer.jobs);
  }
  return answer;
}

}  // namespace

Questions::Questions(std::chrono::milliseconds patience)
    : _end(std::chrono::steady_clock::now() + patience) {
  PinModule();
  _bits = Asked<BitsAnswer>(AskBits);
  if (GetConfiguration() == nullptr) return;
  _service = Asked<ServiceAnswer>(AskService);
  _token = Asked<unsigned long>(AskForToken);
}

ServiceAnswer Questions::Service() const {
  return _service.Until(_end).value_or(ServiceAnswer{ERROR_WINHTTP_TIMEOUT});
}

unsigned long Questions::Token() const {
  return _token.Until(_end).value_or(ERROR_WINHTTP_TIMEOUT);
}

BitsAnswer Questions::Bits() const {
  return _bits.Until(_end).value_or(BitsAnswer{HRESULT_FROM_WIN32(ERROR_TIMEOUT)});
}

}  // namespace refhost
