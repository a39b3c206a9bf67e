#include "reference_host/package/CabinetSignature.h"

#include <softpub.h>
#include <wincrypt.h>
#include <wintrust.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <exception>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include "host/common/Text.h"
#include "reference_host/base/AwakeClock.h"
#include "reference_host/base/Handle.h"
#include "reference_host/base/ModulePin.h"
#include "reference_host/package/CabinetDigest.h"
#include "reference_host/package/SignedContent.h"

namespace refhost {

namespace {

using Bytes = std::vector<std::uint8_t>;
using BytesView = std::span<const std::uint8_t>;

constexpr DWORD Encoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;
/// Windows may fetch roots and lists over the network, each with a time-out of 15 s by default. For
/// all of them, of the time in which the machine is awake:
constexpr std::chrono::seconds TrustLimit(60);
/// How often the caller looks for a stop meanwhile.
constexpr std::chrono::milliseconds StopLook(50);
constexpr char CodeSigningUsage[] = "1.3.6.1.5.5.7.3.3";

/// Closes a handle of the crypto library at the end of its scope.
template <auto Close>
struct Closer {
  template <typename T>
  void operator()(T* handle) const {
    Close(handle);
  }
};
void CloseStore(void* store) { CertCloseStore(store, 0); }
using Message = std::unique_ptr<void, Closer<CryptMsgClose>>;
using Store = std::unique_ptr<void, Closer<CloseStore>>;
using Certificate = std::unique_ptr<const CERT_CONTEXT, Closer<CertFreeCertificateContext>>;
using Chain = std::unique_ptr<const CERT_CHAIN_CONTEXT, Closer<CertFreeCertificateChain>>;

void Require(bool condition, const char* fault) {
  if (!condition) throw std::runtime_error(fault);
}

Bytes ReadSignature(const CabinetFile& cabinet) {
  const CabinetHeader& header = cabinet.Header();
  Require(SignatureEndsFile(header, cabinet.Size()), SignatureFault::NotWhole);
  Require(header.signatureSize <= MaxSignatureBytes, SignatureFault::TooLarge);
  Bytes bytes(header.signatureSize);
  Require(cabinet.ReadAt(header.signatureOffset, bytes.data(), header.signatureSize) ==
              header.signatureSize,
          SignatureFault::NotRead);
  return bytes;
}

Message Decode(const Bytes& bytes) {
  Message message(CryptMsgOpenToDecode(Encoding, 0, 0, 0, nullptr, nullptr));
  Require(message &&
              CryptMsgUpdate(message.get(), bytes.data(), static_cast<DWORD>(bytes.size()), TRUE),
          SignatureFault::NotDecoded);
  return message;
}

/// @return a parameter of the message (structures come with their parts behind them), empty when
/// there is none.
Bytes Parameter(const Message& message, DWORD type) {
  DWORD size = 0;
  if (!CryptMsgGetParam(message.get(), type, 0, nullptr, &size)) return {};
  Bytes bytes(size);
  if (!CryptMsgGetParam(message.get(), type, 0, bytes.data(), &size)) return {};
  bytes.resize(size);
  return bytes;
}

DWORD NumberParameter(const Message& message, DWORD type) {
  DWORD number = 0, size = sizeof(number);
  return CryptMsgGetParam(message.get(), type, 0, &number, &size) ? number : 0;
}

/// @return the attribute's first value, encoded; empty when there is none.
BytesView AttributeValue(const Bytes& parameter, const char* identifier) {
  if (parameter.size() < sizeof(CRYPT_ATTRIBUTES)) return {};
  const auto* attributes = reinterpret_cast<const CRYPT_ATTRIBUTES*>(parameter.data());
  for (DWORD i = 0; i < attributes->cAttr; ++i) {
    const CRYPT_ATTRIBUTE& attribute = attributes->rgAttr[i];
    if (std::strcmp(attribute.pszObjId, identifier) == 0 && attribute.cValue == 1) {
      return {attribute.rgValue[0].pbData, attribute.rgValue[0].cbData};
    }
  }
  return {};
}

/// @return what is inside of an encoded sequence that is `bytes` as a whole.
BytesView InsideOfSequence(BytesView bytes) {
  Require(bytes.size() >= 2 && bytes[0] == 0x30, SignatureFault::Malformed);
  std::size_t header = 2, length = bytes[1];
  if (length >= 0x80) {
    header += length & 0x7F;
    Require(header <= 6 && header <= bytes.size(), SignatureFault::Malformed);
    length = 0;
    for (std::size_t i = 2; i < header; ++i) length = length << 8 | bytes[i];
  }
  Require(bytes.size() - header == length, SignatureFault::Malformed);
  return bytes.subspan(header);
}

/// The signed content holds the digest of the cabinet, the signed attributes that of the content.
void CheckDigests(const CabinetFile& cabinet, const Message& message) {
  constexpr std::uint8_t OctetString[] = {0x04, 0x20};
  const Bytes type = Parameter(message, CMSG_INNER_CONTENT_TYPE_PARAM);
  constexpr std::size_t TypeBytes = sizeof(SPC_INDIRECT_DATA_OBJID);  // with the closing zero
  Require(
      type.size() >= TypeBytes && std::memcmp(type.data(), SPC_INDIRECT_DATA_OBJID, TypeBytes) == 0,
      SignatureFault::OtherKind);
  const Bytes content = Parameter(message, CMSG_CONTENT_PARAM);
  Require(EndsIn(content, Sha256DigestInfo, SignedDigestOf(cabinet)), SignatureFault::Changed);
  const Bytes attributes = Parameter(message, CMSG_SIGNER_AUTH_ATTR_PARAM);
  const BytesView digest = AttributeValue(attributes, szOID_RSA_messageDigest);
  Require(digest.size() == sizeof(OctetString) + sizeof(Sha256) &&
              EndsIn(digest, OctetString, DigestOf(InsideOfSequence(content))),
          SignatureFault::ContentChanged);
}

Certificate FindSigner(const Message& message, const Store& store) {
  Require(NumberParameter(message, CMSG_SIGNER_COUNT_PARAM) == 1, SignatureFault::NotOneSigner);
  Bytes info = Parameter(message, CMSG_SIGNER_CERT_INFO_PARAM);
  Require(!info.empty() && store, SignatureFault::NoCertificate);
  Certificate signer(CertGetSubjectCertificateFromStore(store.get(), Encoding,
                                                        reinterpret_cast<CERT_INFO*>(info.data())));
  Require(signer != nullptr, SignatureFault::NoCertificate);
  return signer;
}

std::string NameOf(const Certificate& signer) {
  wchar_t name[256] = L"";
  CertGetNameStringW(signer.get(), CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, name, 256);
  return ZLT::String::UTF16ToUTF8(name);
}

/// A time stamp lets a signature outlive its certificate. Whether the stamp itself is good is left
/// to the platform's verdict.
bool HasTimeStamp(const Message& message) {
  const Bytes attributes = Parameter(message, CMSG_SIGNER_UNAUTH_ATTR_PARAM);
  return !AttributeValue(attributes, TimeStampAttribute).empty() ||
         !AttributeValue(attributes, CounterSignatureAttribute).empty();
}

/// Only the machine's roots count, not what a user has added for himself.
Chain BuildChain(const Certificate& signer, const Store& store) {
  LPSTR usages[] = {const_cast<LPSTR>(CodeSigningUsage)};
  CERT_CHAIN_PARA parameters{};
  parameters.cbSize = sizeof(parameters);
  parameters.RequestedUsage.dwType = USAGE_MATCH_TYPE_AND;
  parameters.RequestedUsage.Usage = {1, usages};
  PCCERT_CHAIN_CONTEXT chain = nullptr;
  CertGetCertificateChain(HCCE_LOCAL_MACHINE, signer.get(), nullptr, store.get(), &parameters, 0,
                          nullptr, &chain);
  return Chain(chain);
}

void CheckChain(const Certificate& signer, const Store& store, bool timeStamped) {
  const Chain chain = BuildChain(signer, store);
  Require(chain != nullptr, "its signer's chain cannot be built");
  DWORD errors = chain->TrustStatus.dwErrorStatus;
  CERT_CHAIN_POLICY_PARA policy{};
  policy.cbSize = sizeof(policy);
  if (timeStamped) {
    errors &= ~static_cast<DWORD>(CERT_TRUST_IS_NOT_TIME_VALID);
    policy.dwFlags = CERT_CHAIN_POLICY_IGNORE_NOT_TIME_VALID_FLAG;
  }
  CERT_CHAIN_POLICY_STATUS verdict{};
  verdict.cbSize = sizeof(verdict);
  Require(CertVerifyCertificateChainPolicy(CERT_CHAIN_POLICY_AUTHENTICODE, chain.get(), &policy,
                                           &verdict) &&
              verdict.dwError == 0 && errors == 0,
          SignatureFault::NotTrusted);
}

void CheckByPlatform(const std::wstring& path, HANDLE handle) {
  WINTRUST_FILE_INFO file{};
  file.cbStruct = sizeof(file);
  file.pcwszFilePath = path.c_str();
  file.hFile = handle;
  WINTRUST_DATA data{};
  data.cbStruct = sizeof(data);
  data.dwUIChoice = WTD_UI_NONE;
  data.fdwRevocationChecks = WTD_REVOKE_NONE;
  data.dwUnionChoice = WTD_CHOICE_FILE;
  data.pFile = &file;
  data.dwStateAction = WTD_STATEACTION_VERIFY;
  GUID action = WINTRUST_ACTION_GENERIC_VERIFY_V2;
  const HWND nobody = static_cast<HWND>(INVALID_HANDLE_VALUE);
  const LONG verdict = WinVerifyTrust(nobody, &action, &data);
  data.dwStateAction = WTD_STATEACTION_CLOSE;
  WinVerifyTrust(nobody, &action, &data);
  if (verdict == 0) return;
  const auto code = static_cast<std::uint32_t>(verdict);
  const std::uint8_t bytes[] = {
      static_cast<std::uint8_t>(code >> 24), static_cast<std::uint8_t>(code >> 16),
      static_cast<std::uint8_t>(code >> 8), static_cast<std::uint8_t>(code)};
  throw std::runtime_error("the platform refuses its signature, code 0x" + Hex(bytes));
}

/// Whether the machine trusts the signer, with all that it takes to find out: what waits for the
/// network may outlive its caller.
struct TrustQuestion {
  Message message;
  Store store;
  Certificate signer;
  std::wstring path;
  Handle file;

  /// @throws std::runtime_error saying why not.
  void RequireTrust() const {
    CheckChain(signer, store, HasTimeStamp(message));
    CheckByPlatform(path, file.Get());
  }
};

Handle Duplicate(HANDLE handle) {
  HANDLE copy = nullptr;
  const HANDLE own = GetCurrentProcess();
  Require(DuplicateHandle(own, handle, own, &copy, 0, FALSE, DUPLICATE_SAME_ACCESS),
          "it cannot be kept open");
  return Handle(copy);
}

/// Asks on a thread of its own, which is left behind when the suite is told to stop or Windows
/// takes too long: nothing ends its calls. @throws as the question.
void AskInTime(const std::shared_ptr<const TrustQuestion>& question, const CabinetFile& cabinet) {
  std::packaged_task<void()> task([question] { question->RequireTrust(); });
  std::future<void> answer = task.get_future();
  PinModule();
  std::thread(std::move(task)).detach();
  const auto begin = AwakeClock::Now();
  while (answer.wait_for(StopLook) != std::future_status::ready) {
    Require(!cabinet.IsToStop(), "the suite was told to stop");
    Require(AwakeClock::Now() - begin < TrustLimit,
            "its signer was not judged in time: the machine may wait for its network");
  }
  answer.get();
}

/// @param findings out, who has signed, as soon as that is known.
/// @throws std::runtime_error saying the fault.
void CheckSignature(const CabinetFile& cabinet, SignatureFindings& findings) {
  Message message = Decode(ReadSignature(cabinet));
  Store store(CertOpenStore(CERT_STORE_PROV_MSG, Encoding, 0, 0, message.get()));
  Certificate signer = FindSigner(message, store);
  findings.publisher = NameOf(signer);
  findings.thumbprint = Hex(DigestOf({signer->pbCertEncoded, signer->cbCertEncoded}));
  CheckDigests(cabinet, message);
  Require(CryptMsgControl(message.get(), 0, CMSG_CTRL_VERIFY_SIGNATURE, signer->pCertInfo),
          SignatureFault::OtherSigner);
  const std::shared_ptr<const TrustQuestion> question(
      new TrustQuestion{std::move(message), std::move(store), std::move(signer), cabinet.Path(),
                        Duplicate(cabinet.File())});
  AskInTime(question, cabinet);
}

}  // namespace

SignatureFindings InspectSignature(const CabinetFile& cabinet) {
  SignatureFindings findings;
  findings.present = cabinet.Header().IsSigned();
  if (!findings.present) return findings;
  try {
    CheckSignature(cabinet, findings);
  } catch (const std::exception& exception) {
    findings.fault = exception.what();
  }
  return findings;
}

}  // namespace refhost
