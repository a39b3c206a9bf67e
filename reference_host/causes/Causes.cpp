#include "reference_host/causes/Causes.h"

#include <algorithm>
#include <iterator>

namespace refhost {

namespace {

constexpr const char* AgentLog = "TolmarAgent.log";
constexpr const char* HostLog = "ZLT.log";

constexpr Cause Table[] = {
    {"done", 0, 0, "Everything that was asked for was done.", "", "Nothing."},

    {"request.not-built", 11, 11, "A request to the service could not be built or sent.", AgentLog,
     "Look at the part numbers and the device identifier: one of them is too long."},
    {"token.none", 29, 31, "The device got no token for its request.", HostLog,
     "Check sessionToken and tokenUrl in the configuration, and the machine's clock: tolmarctl "
     "doctor does."},
    {"report.failed", 32, 33, "A progress report did not reach the service.", AgentLog,
     "Nothing: reports do not stop an installation."},
    {"request.refused", 34, 36, "The service refused the request.", AgentLog,
     "Ask the service's side: it does not know the device, the title or the module."},
    {"report.refused", 37, 38, "The service refused a progress report.", AgentLog,
     "Nothing: reports do not stop an installation."},
    {"reply.unreadable", 39, 39, "A reply or document is no JSON or has another shape than agreed.",
     AgentLog,
     "Ask the service's side. From an installation: restart the host, its lock stays taken."},
    {"device.unregistered", 62, 62, "The device is not registered.", "the configuration",
     "Register the device; \"registered\" must not be false."},
    {"reply.http-401", 401, 401, "The service does not accept the device's token.", HostLog,
     "Check sessionToken and the machine's clock."},
    {"reply.http-403", 403, 403, "The service forbids the device what it asked for.", HostLog,
     "Ask the service's side whether the device is entitled."},
    {"reply.http-404", 404, 404, "The service knows nothing at this address.", HostLog,
     "Check baseUrl in the configuration."},
    {"reply.http-busy", 500, 599, "The service failed or is overloaded.", AgentLog,
     "Wait: the agent tries 500, 503 and 504 four times. If it lasts, ask the service's side."},
    {"reply.http", 100, 499, "The service answered with an HTTP status that is no success.",
     HostLog, "Ask the service's side; check baseUrl and what stands between it and the device."},
    {"network.timeout", 12002, 12002, "The service did not answer in time.", HostLog,
     "Check network and proxy; requestTimeoutSeconds is the limit."},
    {"network.name", 12007, 12007, "The service's name is not known.", HostLog,
     "Check baseUrl, DNS and proxy. The agent tries it four times."},
    {"network.connection", 12029, 12029, "No connection to the service can be made.", HostLog,
     "Check network, firewall and proxy. The agent tries it four times."},
    {"network.broken", 12030, 12030, "The connection broke before the whole reply was there.",
     HostLog, "Try again; if it lasts, look at what stands between the device and the service."},
    {"network.certificate", 12175, 12175, "The service's certificate is not accepted.", HostLog,
     "Check the machine's clock and trusted roots, and whether a proxy inspects connections."},
    {"network", 12000, 12999, "The service was not reached.", HostLog,
     "Check network, proxy and certificates: the number is WinHTTP's."},

    {"module.not-found", 47, 47,
     "The installer ran, but the check script does not find the module; or it was cancelled.",
     HostLog, "Look at the ends of both scripts' output: one of them is wrong."},
    {"module.not-installed", 48, 48, "The package was refused, or its installer did not start.",
     HostLog, "Look for the reason there: signature, publisher, damaged package, folder."},
    {"title.nothing-done", 0xFFFFFFFF, 0xFFFFFFFF,
     "Nothing was done: the first download failed, or the title has no module.", HostLog,
     "Look for the failed download there."},

    {"package.unsigned", 0, 0, "The package is not signed.", HostLog,
     "Sign it, or set requireSignedPackages to false in a test lab."},
    {"package.signature", 0, 0, "The package's signature is not good.", HostLog,
     "Build and sign the package anew; check that the machine trusts the publisher's root."},
    {"package.publisher", 0, 0, "The package is signed by a publisher that is not trusted here.",
     HostLog, "Add the publisher's thumbprint to trustedPublishers, if it is to be trusted."},
    {"package.damaged", 0, 0, "The package is damaged, or no cabinet.", HostLog,
     "Build the package anew."},
    {"package.member", 0, 0, "The package holds a name that is refused.", HostLog,
     "Build the package without it: docs/packages.md tells which names are refused."},
    {"package.too-large", 0, 0, "The package unpacks to more than maxUnpackedBytes allows.",
     HostLog, "Raise maxUnpackedBytes, or make the package smaller."},
    {"package.not-unpacked", 0, 0, "The package's files could not be written.", HostLog,
     "Look for the system's error there: 112 is a full disk."},
    {"package.stopped", 0, 0, "The host ended before the package was unpacked.", HostLog,
     "Nothing, if it was meant."},

    {"download.refused", 0, 0, "A file's server refuses it.", HostLog,
     "Ask the service's side: the status tells whether the file is gone or the address expired."},
    {"download.network", 0, 0, "A file's server was not reached, or the connection broke.", HostLog,
     "Check network, proxy and certificates; downloads take BITS's proxy."},
    {"download.stalled", 0, 0, "No byte of a file arrived for downloadStallSeconds.", HostLog,
     "Check the network, and policies that hold BITS back."},
    {"download.content", 0, 0, "What arrived is not the file that was announced.", HostLog,
     "Ask the service's side: something between answers in its place, or the file has changed."},
    {"download.too-large", 0, 0, "A file is larger than maxFileBytes allows.", HostLog,
     "Raise maxFileBytes, or make the package smaller."},
    {"download.address", 0, 0, "The service gave an address or a name that is not taken.", HostLog,
     "Ask the service's side: only https addresses and plain file names are."},
    {"download.service", 0, 0, "BITS, the machine's download service, did not do its part.",
     HostLog, "Start the service BITS; look at policies and at bitsadmin /list."},
    {"download.stopped", 0, 0, "The download was cancelled.", HostLog, "Nothing, if it was meant."},

    {"device.disk-full", 0, 0, "The disk has no room for the files.", HostLog, "Free some space."},
    {"device.file-in-use", 0, 0, "Another program has a file open or keeps it.", HostLog,
     "Find that program; a virus scanner lets go after a while."},
    {"device.folder", 0, 0, "A folder cannot be trusted or used.", HostLog,
     "Remove what stands in its place, and find out who has put it there."},
    {"device.lease", 0, 0, "Another process of this machine installs.", HostLog,
     "Wait for it: tolmarctl plan tells which one."},

    {"installer.exit-code", 0, 0, "The installer ended with another exit code than 0.", HostLog,
     "Look at the end of its output."},
    {"installer.time-out", 0, 0, "The installer ran longer than installerTimeoutSeconds.", HostLog,
     "Find out what it waits for: nobody answers its questions."},
    {"installer.not-started", 0, 0, "The installer did not start.", HostLog,
     "Look for the system's error there; check PowerShell and its policies."},
    {"check.exit-code", 0, 0, "The check script says that the module is not installed.", HostLog,
     "Look at the end of its output."},
    {"check.time-out", 0, 0, "The check script ran longer than processTimeoutSeconds.", HostLog,
     "Find out what it waits for."},
    {"check.not-started", 0, 0, "The check script did not start.", HostLog,
     "Look for the system's error there; check PowerShell and its policies."},
    {"check.cancelled", 0, 0, "The check was cancelled.", HostLog, "Nothing, if it was meant."},
};

}  // namespace

const std::vector<Cause>& AllCauses() {
  static const std::vector<Cause> causes(std::begin(Table), std::end(Table));
  return causes;
}

const Cause* FindCause(const std::string& id) {
  const std::vector<Cause>& all = AllCauses();
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const Cause& cause) { return cause.id == id; });
  return found == all.end() ? nullptr : &*found;
}

// The first one that fits: single codes stand before the ranges that they lie in.
const Cause* CauseOfCode(std::uint32_t code) {
  if (code == 0) return FindCause("done");
  const std::vector<Cause>& all = AllCauses();
  const auto found = std::find_if(all.begin(), all.end(), [&](const Cause& cause) {
    return cause.last != 0 && cause.first <= code && code <= cause.last;
  });
  return found == all.end() ? nullptr : &*found;
}

}  // namespace refhost
