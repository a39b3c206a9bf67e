// Adds certificates to the lab machine's trusted roots: labtrust CERTIFICATE... (PEM or DER)
#include <windows.h>
// Behind windows.h, whose types they need.
#include <shellapi.h>
#include <wincrypt.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "reference_host/wine/UnderWine.h"

namespace {

constexpr int ExitUsage = 64;

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// @return the certificate's DER bytes, empty when there are none.
std::vector<BYTE> Decode(const std::string& bytes) {
  const auto length = static_cast<DWORD>(bytes.size());
  DWORD size = 0;
  if (!CryptStringToBinaryA(bytes.data(), length, CRYPT_STRING_BASE64HEADER, nullptr, &size,
                            nullptr, nullptr)) {
    return {bytes.begin(), bytes.end()};
  }
  std::vector<BYTE> der(size);
  CryptStringToBinaryA(bytes.data(), length, CRYPT_STRING_BASE64HEADER, der.data(), &size, nullptr,
                       nullptr);
  return der;
}

bool Trust(HCERTSTORE store, const wchar_t* path) {
  const std::vector<BYTE> der = Decode(ReadFile(path));
  const bool added = CertAddEncodedCertificateToStore(store, X509_ASN_ENCODING, der.data(),
                                                      static_cast<DWORD>(der.size()),
                                                      CERT_STORE_ADD_REPLACE_EXISTING, nullptr);
  if (!added) std::fprintf(stderr, "labtrust: %ls: error 0x%lx\n", path, GetLastError());
  return added;
}

}  // namespace

int main() {
  int count = 0;
  wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  if (!IsUnderWine() || count < 2) {
    std::fputs("usage, in labs under Wine only: labtrust CERTIFICATE...\n", stderr);
    return ExitUsage;
  }
  const HCERTSTORE store =
      CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_LOCAL_MACHINE, L"ROOT");
  if (store == nullptr) return 1;
  bool success = true;
  for (int i = 1; i < count; ++i) success = Trust(store, arguments[i]) && success;
  return CertCloseStore(store, 0) && success ? 0 : 1;
}
