/* What version 1 of the interface has promised, and what ./dev test holds tolmar/agent.h and the
 * DLL's names against. Each declaration is repeated here: one that changes does not compile. Lines
 * are added, with a version; one that goes or changes breaks hosts in the field. */
#include <stddef.h>

#include "tolmar/agent.h"

uint32_t tolmar_api_version(void);
void tolmar_free(char*);
uint32_t tolmar_describe(uint32_t, tolmar_cause*);
uint32_t tolmar_start(const tolmar_configuration*, char**);
uint32_t tolmar_stop(void);
void* tolmar_event_create(void);
uint32_t tolmar_event_set(void*);
void tolmar_event_close(void*);
uint32_t tolmar_set_base_uri(const char*);
uint32_t tolmar_set_realm(const char*);
uint32_t tolmar_device_configure(uint32_t);
uint32_t tolmar_has_entitled_software(uint8_t*);
uint32_t tolmar_get_entitled_software(char**);
uint32_t tolmar_get_entitled_software_status(const char*, void*, int32_t, char**);
uint32_t tolmar_get_title_status(const char*, uint32_t, void*, int32_t, char**);
uint32_t tolmar_install_entitled_software(const char*, const tolmar_install_options*, char**);
uint32_t tolmar_get_install_status(const char*, char**);
uint32_t tolmar_get_download_files(const char*, const char*, char**);
uint32_t tolmar_report_download_progress(const char*, const char*, int32_t, const char*,
                                         const char*, const char*, int32_t, const char*);
uint32_t tolmar_report_install_progress(const char*, const char*, int32_t, const char*,
                                        const char*);

/* Refuses a member of another type or place, a structure that shrinks, another number for a code.
 */
#define HOLDS(name, what) typedef char name[(what) ? 1 : -1]
#define MEMBER(type, member, kind, place)                         \
  static kind* member##_of_##type(type* t) { return &t->member; } \
  HOLDS(place_of_##member##_of_##type, offsetof(type, member) == (place))
#define PART(type, size_then) HOLDS(whole_##type, sizeof(type) >= (size_then))

MEMBER(tolmar_configuration, size, uint32_t, 0);
MEMBER(tolmar_configuration, path, const char*, 8);
MEMBER(tolmar_configuration, json, const char*, 16);
PART(tolmar_configuration, 24);
MEMBER(tolmar_cause, size, uint32_t, 0);
MEMBER(tolmar_cause, id, const char*, 8);
MEMBER(tolmar_cause, happened, const char*, 16);
MEMBER(tolmar_cause, seen, const char*, 24);
MEMBER(tolmar_cause, remedy, const char*, 32);
PART(tolmar_cause, 40);
MEMBER(tolmar_progress, size, uint32_t, 0);
MEMBER(tolmar_progress, percent, int32_t, 4);
MEMBER(tolmar_progress, l1_fru_pn, const char*, 8);
MEMBER(tolmar_progress, status, const char*, 16);
PART(tolmar_progress, 24);
MEMBER(tolmar_install_options, size, uint32_t, 0);
MEMBER(tolmar_install_options, preinstall_only, int32_t, 4);
MEMBER(tolmar_install_options, cancel, void*, 8);
MEMBER(tolmar_install_options, on_progress, tolmar_progress_callback, 16);
MEMBER(tolmar_install_options, context, void*, 24);
MEMBER(tolmar_install_options, interval_ms, uint32_t, 32);
PART(tolmar_install_options, 40);
typedef void (*callback_of_version_1)(void*, const tolmar_progress*);
static callback_of_version_1 callback(tolmar_progress_callback same) { return same; }

HOLDS(code_0,
      TOLMAR_OK == 0 && TOLMAR_NULL_ARGUMENT == 0x20000001 && TOLMAR_BAD_UTF8 == 0x20000002);
HOLDS(code_3, TOLMAR_BAD_JSON == 0x20000003 && TOLMAR_BAD_TITLES == 0x20000004 &&
                  TOLMAR_BAD_SIZE == 0x20000005);
HOLDS(code_6, TOLMAR_BAD_CONFIGURATION == 0x20000006 && TOLMAR_NOT_STARTED == 0x20000007);
HOLDS(code_8, TOLMAR_ALREADY_STARTED == 0x20000008 && TOLMAR_STOPPED == 0x20000009);
HOLDS(code_10, TOLMAR_TIMED_OUT == 0x2000000A && TOLMAR_NO_RESOURCES == 0x2000000B);
HOLDS(code_12, TOLMAR_HOST_FAULT == 0x2000000C && TOLMAR_UNKNOWN_CODE == 0x2000000D);
