#pragma once

#include "tools/tolmarhost/Device.h"
#include "tools/tolmarhost/EventLog.h"

/// Writes a notice to the event log, with what is known of its cause in words.
void Write(const EventLog& log, const service::Notice& notice);
