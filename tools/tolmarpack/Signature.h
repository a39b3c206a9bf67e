#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "reference_host/package/CabinetPolicy.h"

namespace tolmarpack {

/// Whose word counts.
struct Trust {
  bool isAsked = true;          ///< false: whether devices trust the signer is left open
  std::filesystem::path roots;  ///< PEM, what a device trusts; empty: what this machine trusts
};

/// Looks at a cabinet's signature, as a host does: every byte, the signer's signature, its chain.
/// On Windows the host itself looks, and this machine's roots count alone.
/// @throws std::runtime_error when the file is not one whole cabinet.
refhost::SignatureFindings InspectSignature(const std::filesystem::path& cabinet,
                                            const Trust& trust);

/// Who signs. Either `pfx`, or `certificate` and `key`.
struct Signer {
  std::string pfx;           ///< certificate and key in one file (PKCS #12)
  std::string certificate;   ///< PEM
  std::string key;           ///< PEM
  std::string chain;         ///< PEM, what lies between certificate and root; may be empty
  std::string passwordFile;  ///< its first line opens the key; empty: nothing needs to be opened
  std::string timestamp;     ///< address of a time stamp service (RFC 3161); empty: no time stamp

  bool IsNamed() const { return !pfx.empty() || !certificate.empty(); }
};

/// @return the command that makes the signed cabinet `result` (not there yet) out of `cabinet`.
/// @throws std::runtime_error when this system's program cannot sign with what the signer has.
std::vector<std::string> SigningWords(const std::filesystem::path& cabinet,
                                      const std::filesystem::path& result, const Signer& signer);

/// Signs a cabinet with SHA-256, by osslsigncode, on Windows by signtool, which takes a PFX only.
/// @param cabinet in, unsigned. @param result in, replaced once the signed one is whole; may be
/// `cabinet`. @throws std::runtime_error with what the signing program said.
void SignCabinet(const std::filesystem::path& cabinet, const std::filesystem::path& result,
                 const Signer& signer);

}  // namespace tolmarpack
