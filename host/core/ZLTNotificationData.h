#pragma once

#include <cstdint>

#include "host/Export.h"

/// One notification of the suite's bus. A value.
class ZLT_API ZLTNotificationData {
 public:
  /// @param vrx in, true: meant for the session components only.
  /// @param topicId in, what it is about. @param eventState in, what has happened there.
  ZLTNotificationData(bool vrx, std::uint32_t topicId, std::uint32_t eventState);

  bool isVRXNotification() const;       ///< @return the constructor's `vrx`.
  std::uint32_t getTopicId() const;     ///< @return the constructor's `topicId`.
  std::uint32_t getEventState() const;  ///< @return the constructor's `eventState`.

 private:
  bool _vrx;
  std::uint32_t _topicId;
  std::uint32_t _eventState;
};
