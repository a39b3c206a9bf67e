#ifndef TOLMAR_AGENT_H
#define TOLMAR_AGENT_H

#include <stdint.h>

/// @file
/// The software-delivery agent for hosts in any language: C99, plain types, nothing else to
/// include. TolmarAgentC.dll stands beside TolmarAgent.dll and passes its operations on; what they
/// do tells agent/TolmarAgent.h, and docs/embedding.md which operation is which.
///
/// Codes. 0, the agent's result codes, HTTP status codes and WinHTTP error numbers are the agent's
/// own; those of `tolmar_code` are this layer's. `tolmar_describe` has words for all of them.
///
/// Texts are UTF-8 and end with a zero. Documents are JSON texts, each an object; "titles" are a
/// document with the array "swList", as `tolmar_get_entitled_software` gives it. What the host
/// passes it keeps: nothing of it is used once the call is back, handles excepted.
///
/// Ownership. A `char**` is set to a text that the host gives back by `tolmar_free`, or to NULL. A
/// document that goes in and comes out comes out whenever the agent was asked, also with a code
/// other than 0; with a code of this layer it is NULL.
///
/// Threads. Any thread may call anything, several at once; a call blocks its caller until it is
/// done. Nothing is thrown out of a call or past one. A callback runs on the thread that made the
/// call, never on another, and may call everything but `tolmar_stop`.
///
/// Structures begin with their size, which the host sets to `sizeof` of it; the rest it sets to
/// zero where it has nothing to say.
///
/// Versions. What this header promises stays for as long as `TOLMAR_API_VERSION` does, and for two
/// minor releases of the library behind the one that announces its end (CHANGELOG.md). Additions,
/// at the end of structures too, raise the version by one and break nobody.

/// The interface's version that this header tells of.
#define TOLMAR_API_VERSION 1u

#ifndef TOLMAR_C_API
#define TOLMAR_C_API __declspec(dllimport)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// This layer's own codes.
enum tolmar_code {
  TOLMAR_OK = 0,                          ///< done
  TOLMAR_NULL_ARGUMENT = 0x20000001,      ///< a pointer that is needed is NULL
  TOLMAR_BAD_UTF8 = 0x20000002,           ///< a text is not UTF-8
  TOLMAR_BAD_JSON = 0x20000003,           ///< a document is no JSON, or not an object
  TOLMAR_BAD_TITLES = 0x20000004,         ///< a list of titles has another shape than agreed
  TOLMAR_BAD_SIZE = 0x20000005,           ///< a structure's size is none that this layer knows
  TOLMAR_BAD_CONFIGURATION = 0x20000006,  ///< there is no usable configuration
  TOLMAR_NOT_STARTED = 0x20000007,        ///< the agent was not started, or is still starting
  TOLMAR_ALREADY_STARTED = 0x20000008,    ///< it has been started, or another thread is at it
  TOLMAR_STOPPED = 0x20000009,            ///< it was stopped: only a new process starts it again
  TOLMAR_TIMED_OUT = 0x2000000A,          ///< not done within the time that was given
  TOLMAR_NO_RESOURCES = 0x2000000B,       ///< memory, an event or a thread is not to be had
  TOLMAR_HOST_FAULT = 0x2000000C,         ///< agent or host suite failed as neither foresees
  TOLMAR_UNKNOWN_CODE = 0x2000000D        ///< nobody has described this code
};

/// Where the host suite's configuration is. Neither is set: where the suite looks by itself
/// (docs/operations.md).
typedef struct tolmar_configuration {
  uint32_t size;     ///< in, sizeof(tolmar_configuration)
  const char* path;  ///< in, the JSON file's path, or NULL
  const char* json;  ///< in, or the JSON text itself; NULL where `path` is set
} tolmar_configuration;

/// What a code means, for people. The texts are the library's: not to be freed.
typedef struct tolmar_cause {
  uint32_t size;         ///< in, sizeof(tolmar_cause)
  const char* id;        ///< out, "network.timeout"
  const char* happened;  ///< out, a sentence
  const char* seen;      ///< out, where to look for more; empty: nowhere
  const char* remedy;    ///< out, what to do
} tolmar_cause;

/// How a title is getting on. Valid during the callback.
typedef struct tolmar_progress {
  uint32_t size;          ///< out, the library's sizeof(tolmar_progress)
  int32_t percent;        ///< out, of the title
  const char* l1_fru_pn;  ///< out, the title's part number
  const char* status;     ///< out, "downloading", "downloaded", "installing", ...
} tolmar_progress;

/// Gets each change of the title that is being installed. @param context in, the host's own.
/// @param progress in, what has changed.
typedef void (*tolmar_progress_callback)(void* context, const tolmar_progress* progress);

/// How to install.
typedef struct tolmar_install_options {
  uint32_t size;                         ///< in, sizeof(tolmar_install_options)
  int32_t preinstall_only;               ///< in, not 0: only titles for device set-up
  void* cancel;                          ///< in, see `tolmar_event_create`; or NULL
  tolmar_progress_callback on_progress;  ///< in, or NULL: the host asks by itself, or not at all
  void* context;                         ///< in, for the callback
  uint32_t interval_ms;                  ///< in, how often to look for a change; 0: 500
} tolmar_install_options;

/// Does not need the agent to be started.
/// @return the library's own version; less than TOLMAR_API_VERSION: it lacks what is newer.
TOLMAR_C_API uint32_t tolmar_api_version(void);

/// Gives a text back that a call has set. @param text in, or NULL, which does nothing.
TOLMAR_C_API void tolmar_free(char* text);

/// Tells what a code means. Does not need the agent to be started.
/// @param code in, what any call has returned. @param cause out, empty texts for an unknown code.
/// @return 0; TOLMAR_UNKNOWN_CODE.
TOLMAR_C_API uint32_t tolmar_describe(uint32_t code, tolmar_cause* cause);

/// Reads the configuration and starts the agent, once in a process. On a registered device it asks
/// the service, with up to three retries, so it can block for many minutes while the service is
/// down, which nothing cuts off; it may start the pre-install worker. After a failure it may be
/// tried again.
/// @param configuration in, or NULL: as if neither of its texts were set.
/// @param complaint out, or NULL: with TOLMAR_BAD_CONFIGURATION a line that names file and key.
/// @return 0; TOLMAR_BAD_CONFIGURATION, TOLMAR_ALREADY_STARTED, TOLMAR_STOPPED.
TOLMAR_C_API uint32_t tolmar_start(const tolmar_configuration* configuration, char** complaint);

/// Stops the agent, once, before the process ends or unloads the library: ends every retry wait,
/// download and unpacking and every call whose `cancel` was NULL, and waits for the pre-install
/// worker. Calls of other threads that got a handle are the host's: it signals the handle too, and
/// waits for its threads. Calls that come later get TOLMAR_STOPPED.
/// @return 0; TOLMAR_NOT_STARTED, TOLMAR_STOPPED.
TOLMAR_C_API uint32_t tolmar_stop(void);

/// Makes an event to cancel a call by. A host may pass any event of Windows in its place (a HANDLE
/// with manual reset), but has to keep that one open until `tolmar_stop`, since the agent looks at
/// the newest handle that it was given whoever is at work.
/// @return the event, not signalled; NULL when there is none to be had.
TOLMAR_C_API void* tolmar_event_create(void);

/// Cancels: the calls that got the event end their downloads, check scripts and waits for
/// installers, and return. @param event in, of `tolmar_event_create`. @return 0.
TOLMAR_C_API uint32_t tolmar_event_set(void* event);

/// Gives an event back, once no call that got it is under way. @param event in, of
/// `tolmar_event_create`; NULL does nothing.
TOLMAR_C_API void tolmar_event_close(void* event);

/// Sets the service's address. Before `tolmar_start`, with what is configured, it keeps the
/// pre-install worker from being started. @param base in, scheme, host and port. @return 0.
TOLMAR_C_API uint32_t tolmar_set_base_uri(const char* base);

/// Sets the realm, likewise. @param realm in, the realm's name. @return 0.
TOLMAR_C_API uint32_t tolmar_set_realm(const char* realm);

/// Tells the suite's bus that the device is configured (DEVICE_CONFIGURE): the agent then asks the
/// service again if its endpoint has changed, and may start the pre-install worker.
/// @param timeout_ms in, how long to wait until that is done; 0: do not wait.
/// @return 0; TOLMAR_TIMED_OUT.
TOLMAR_C_API uint32_t tolmar_device_configure(uint32_t timeout_ms);

/// Asks whether the device is entitled to any title, and publishes the answer in the registry.
/// @param entitled out, 1 or 0; untouched when no reply could be read. @return a code.
TOLMAR_C_API uint32_t tolmar_has_entitled_software(uint8_t* entitled);

/// Asks for the entitled titles.
/// @param titles out, the service's answer; NULL when no reply could be read. @return a code.
TOLMAR_C_API uint32_t tolmar_get_entitled_software(char** titles);

/// Finds out for every title whether it is installed, by check scripts.
/// @param titles in. @param cancel in, see `tolmar_event_create`; or NULL. @param preinstall_only
/// in, not 0: titles that are not for device set-up are left out.
/// @param result out, the titles with "status" and "progress". @return a code.
TOLMAR_C_API uint32_t tolmar_get_entitled_software_status(const char* titles, void* cancel,
                                                          int32_t preinstall_only, char** result);

/// The same for one title. @param titles in. @param index in, position in "swList", from 0.
/// @param cancel in, as above. @param preinstall_only in, as above. @param result out, as above.
/// @return 0: the title's "status" tells.
TOLMAR_C_API uint32_t tolmar_get_title_status(const char* titles, uint32_t index, void* cancel,
                                              int32_t preinstall_only, char** result);

/// Downloads and installs every title, one after the other; calls wait for each other.
/// @param titles in. @param options in, or NULL: all titles, not to be cancelled, no callback.
/// @param result out, the titles with "status" and "progress". @return the last title's code.
TOLMAR_C_API uint32_t tolmar_install_entitled_software(const char* titles,
                                                       const tolmar_install_options* options,
                                                       char** result);

/// Tells how the title that is being installed (or was last) is getting on, for hosts that ask by
/// themselves. Does not block on the network. @param titles in. @param result out, the titles; the
/// one that it is about has "status" and "progress" (percent as text).
/// @return 0; 0xFFFFFFFF when it is none of them.
TOLMAR_C_API uint32_t tolmar_get_install_status(const char* titles, char** result);

/// Asks for the files of one module. @param l1_fru_pn in, the title's part number.
/// @param module_fru_pn in, the module's. @param files out, the service's answer, an object with
/// the array "fileList"; NULL when there was none. @return a code.
TOLMAR_C_API uint32_t tolmar_get_download_files(const char* l1_fru_pn, const char* module_fru_pn,
                                                char** files);

/// Sends one download report; never retried. @param l1_fru_pn in. @param module_fru_pn in.
/// @param action in, a `DownloadStatus` (agent/ReportStatus.h). @param message in, may be empty.
/// @param file_name in. @param file_url in, sent nowhere. @param progress in, percent.
/// @param device_date in, the device's local time as text. @return a code.
TOLMAR_C_API uint32_t tolmar_report_download_progress(const char* l1_fru_pn,
                                                      const char* module_fru_pn, int32_t action,
                                                      const char* message, const char* file_name,
                                                      const char* file_url, int32_t progress,
                                                      const char* device_date);

/// Sends one install report; never retried. @param l1_fru_pn in. @param module_fru_pn in.
/// @param action in, an `InstallStatus`. @param message in, may be empty. @param device_date in.
/// @return a code.
TOLMAR_C_API uint32_t tolmar_report_install_progress(const char* l1_fru_pn,
                                                     const char* module_fru_pn, int32_t action,
                                                     const char* message, const char* device_date);

#ifdef __cplusplus
}
#endif

#endif
