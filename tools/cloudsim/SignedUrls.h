#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>

namespace cloudsim {

/// Hands out file addresses that expire, and checks them. Any thread.
class SignedUrls {
 public:
  /// @param base in, scheme, host and port, as in "https://localhost:8443".
  /// @param lifetime in, of each address; 0 makes addresses that are expired at once.
  SignedUrls(std::string base, std::chrono::seconds lifetime);

  /// @param path in, absolute, not encoded. @param device in, who is given it.
  /// @param expired in, true for one whose time is over.
  /// @return an address that differs from all earlier ones, also from those of the same second:
  /// clients take an unchanged address for one that cannot be renewed.
  std::string Make(const std::string& path, const std::string& device, bool expired);

  /// @param device, expires, signature in, the address's query values.
  /// @return true when this process made the address for `path` and its time is not over.
  bool IsValid(const std::string& path, const std::string& device, const std::string& expires,
               const std::string& signature) const;

 private:
  std::string SignatureOf(const std::string& path, const std::string& device,
                          const std::string& expires, const std::string& serial) const;

  std::string _key;
  std::string _base;
  std::chrono::seconds _lifetime;
  std::atomic<std::uint64_t> _made{0};
};

}  // namespace cloudsim
