#pragma once

#include <cstdint>

#include "host/Export.h"

/// One notification of the suite's bus. A value.
class ZLT_API ZLTNotificationData {
 public:
  /// @param vrx in, true: meant for the session components only.
  ZLTNotificationData(bool vrx, std::uint32_t topicId, std::uint32_t eventState);

  bool isVRXNotification() const;
  std::uint32_t getTopicId() const;
  std::uint32_t getEventState() const;

 private:
  bool _vrx;
  std::uint32_t _topicId;
  std::uint32_t _eventState;
};
