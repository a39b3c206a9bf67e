// The input as a JSON Web Token, as the payload of one, and as the reply that brings one.

#include "reference_host/identity/JwtExpiry.h"

#include "tests/fuzz/Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Input input{data, size};
  for (const std::string& jwt : {input.Text(), "e30." + input.Base64Url() + ".c2ln"}) {
    const auto times = refhost::TimesOf(jwt);
    for (const auto time : {times ? times->expiry : 0, times ? times->issued.value_or(0) : 0}) {
      Require(time >= 0 && time <= 1'000'000'000'000'000, "a time of a calendar");
    }
    Require(!times || jwt.find_first_of("\r\n \"") == jwt.npos, "it may stand in a header");
  }
  const std::string brought = refhost::JwtOfReply(input.Text());
  Require(brought.empty() || refhost::IsJwt(brought), "no other text is taken for a token");
  return 0;
}
