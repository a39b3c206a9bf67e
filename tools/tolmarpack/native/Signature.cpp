#include "tools/tolmarpack/Signature.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/objects.h>
#include <openssl/pkcs7.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>

#include "reference_host/package/SignedContent.h"
#include "tools/tolmarpack/Files.h"

namespace tolmarpack {

namespace {

namespace Fault = refhost::SignatureFault;
using Bytes = std::span<const std::uint8_t>;
using Digest = std::array<std::uint8_t, 32>;

constexpr char IndirectDataType[] = "1.3.6.1.4.1.311.2.1.4";

struct Releaser {
  void operator()(PKCS7* message) const { PKCS7_free(message); }
  void operator()(BIO* stream) const { BIO_free(stream); }
  void operator()(X509_STORE* store) const { X509_STORE_free(store); }
  void operator()(X509_STORE_CTX* context) const { X509_STORE_CTX_free(context); }
  void operator()(EVP_MD_CTX* hash) const { EVP_MD_CTX_free(hash); }
  void operator()(STACK_OF(X509) * list) const { sk_X509_free(list); }
};
template <class Type>
using Owned = std::unique_ptr<Type, Releaser>;

void Require(bool condition, const char* fault) {
  if (!condition) throw std::runtime_error(fault);
}

Bytes BytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

Digest SignedDigest(Bytes cabinet, const refhost::CabinetHeader& header) {
  const Owned<EVP_MD_CTX> hash(EVP_MD_CTX_new());
  Digest digest{};
  EVP_DigestInit_ex(hash.get(), EVP_sha256(), nullptr);
  for (const refhost::ByteRange& range : refhost::SignedRanges(header)) {
    if (range.to <= range.from) continue;  // No honest cabinet is that short.
    EVP_DigestUpdate(hash.get(), cabinet.data() + range.from, range.to - range.from);
  }
  EVP_DigestFinal_ex(hash.get(), digest.data(), nullptr);
  return digest;
}

std::string IdentifierOf(const ASN1_OBJECT* object) {
  std::array<char, 80> text{};
  OBJ_obj2txt(text.data(), static_cast<int>(text.size()), object, 1);
  return text.data();
}

Owned<PKCS7> Decode(Bytes signature) {
  Require(signature.size() <= refhost::MaxSignatureBytes, Fault::TooLarge);
  const unsigned char* at = signature.data();
  Owned<PKCS7> message(d2i_PKCS7(nullptr, &at, static_cast<long>(signature.size())));
  Require(message && PKCS7_type_is_signed(message.get()), Fault::NotDecoded);
  return message;
}

/// @return what was signed, encoded.
Bytes ContentOf(const PKCS7& message) {
  const PKCS7* content = message.d.sign->contents;
  Require(IdentifierOf(content->type) == IndirectDataType, Fault::OtherKind);
  const ASN1_TYPE* value = content->d.other;
  if (value == nullptr || value->type != V_ASN1_SEQUENCE)
    throw std::runtime_error(Fault::Malformed);
  return {value->value.sequence->data, static_cast<std::size_t>(value->value.sequence->length)};
}

X509* SignerOf(PKCS7& message) {
  Require(sk_PKCS7_SIGNER_INFO_num(PKCS7_get_signer_info(&message)) == 1, Fault::NotOneSigner);
  const Owned<STACK_OF(X509)> signers(PKCS7_get0_signers(&message, nullptr, 0));
  Require(signers != nullptr, Fault::NoCertificate);
  return sk_X509_value(signers.get(), 0);
}

std::string ThumbprintOf(const X509& signer) {
  Digest digest{};
  X509_digest(&signer, EVP_sha256(), digest.data(), nullptr);
  return refhost::Hex(digest);
}

std::string NameOf(const X509& signer) {
  std::array<char, 256> name{};
  X509_NAME_get_text_by_NID(X509_get_subject_name(&signer), NID_commonName, name.data(),
                            static_cast<int>(name.size()));
  return name.data();
}

/// The signed attributes hold the digest of the content without its frame.
void CheckSigner(PKCS7& message, Bytes content) {
  const unsigned char* at = content.data();
  long length = 0;
  int tag = 0, group = 0;
  Require(
      (ASN1_get_object(&at, &length, &tag, &group, static_cast<long>(content.size())) & 0x80) == 0,
      Fault::Malformed);
  const Owned<BIO> inside(BIO_new_mem_buf(at, static_cast<int>(length)));
  if (PKCS7_verify(&message, nullptr, nullptr, inside.get(), nullptr, PKCS7_NOVERIFY) == 1) return;
  const int reason = ERR_GET_REASON(ERR_peek_last_error());
  Require(reason != PKCS7_R_DIGEST_FAILURE, Fault::ContentChanged);
  throw std::runtime_error(Fault::OtherSigner);
}

/// A time stamp lets a signature outlive its certificate; whether it is good is for Windows to say.
bool HasTimeStamp(PKCS7& message) {
  const auto* signer = sk_PKCS7_SIGNER_INFO_value(PKCS7_get_signer_info(&message), 0);
  for (int i = 0; i < sk_X509_ATTRIBUTE_num(signer->unauth_attr); ++i) {
    const X509_ATTRIBUTE* attribute = sk_X509_ATTRIBUTE_value(signer->unauth_attr, i);
    const std::string type =
        IdentifierOf(X509_ATTRIBUTE_get0_object(const_cast<X509_ATTRIBUTE*>(attribute)));
    if (type == refhost::TimeStampAttribute || type == refhost::CounterSignatureAttribute) {
      return true;
    }
  }
  return false;
}

void CheckChain(PKCS7& message, X509& signer, const std::filesystem::path& roots) {
  const Owned<X509_STORE> store(X509_STORE_new());
  if (roots.empty()) {
    X509_STORE_set_default_paths(store.get());
  } else if (X509_STORE_load_file(store.get(), roots.c_str()) != 1) {
    throw std::invalid_argument("no certificate is to be read in " + TextOf(roots));
  }
  const Owned<X509_STORE_CTX> context(X509_STORE_CTX_new());
  X509_STORE_CTX_init(context.get(), store.get(), &signer, message.d.sign->cert);
  if (HasTimeStamp(message)) X509_STORE_CTX_set_flags(context.get(), X509_V_FLAG_NO_CHECK_TIME);
  Require(X509_verify_cert(context.get()) == 1 &&
              (X509_get_extended_key_usage(&signer) & XKU_CODE_SIGN) != 0,
          Fault::NotTrusted);
}

/// @param findings out, who has signed, as soon as that is known.
void CheckSignature(Bytes file, const refhost::CabinetHeader& header, const Trust& trust,
                    refhost::SignatureFindings& findings) {
  Require(refhost::SignatureEndsFile(header, file.size()), Fault::NotWhole);
  const Owned<PKCS7> message = Decode(file.subspan(header.signatureOffset));
  X509* signer = SignerOf(*message);
  findings.publisher = NameOf(*signer);
  findings.thumbprint = ThumbprintOf(*signer);
  const Bytes content = ContentOf(*message);
  Require(refhost::EndsIn(content, refhost::Sha256DigestInfo, SignedDigest(file, header)),
          Fault::Changed);
  CheckSigner(*message, content);
  if (trust.isAsked) CheckChain(*message, *signer, trust.roots);
}

}  // namespace

refhost::SignatureFindings InspectSignature(const std::filesystem::path& cabinet,
                                            const Trust& trust) {
  const std::string text = ReadFile(cabinet);
  const Bytes file = BytesOf(text);
  refhost::CabinetHeader header;
  const std::string fault = refhost::ParseCabinetHeader(
      file.first(std::min(file.size(), refhost::CabinetHeaderBytes)), file.size(), header);
  if (!fault.empty()) throw std::runtime_error("the package cannot be read: " + fault);
  refhost::SignatureFindings findings;
  findings.present = header.IsSigned();
  if (!findings.present) return findings;
  try {
    CheckSignature(file, header, trust, findings);
  } catch (const std::runtime_error& error) {
    findings.fault = error.what();
  }
  return findings;
}

}  // namespace tolmarpack
