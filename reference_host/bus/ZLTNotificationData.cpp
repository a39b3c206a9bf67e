#include "host/core/ZLTNotificationData.h"

ZLTNotificationData::ZLTNotificationData(bool vrx, std::uint32_t topicId, std::uint32_t eventState)
    : _vrx(vrx), _topicId(topicId), _eventState(eventState) {}

bool ZLTNotificationData::isVRXNotification() const { return _vrx; }

std::uint32_t ZLTNotificationData::getTopicId() const { return _topicId; }

std::uint32_t ZLTNotificationData::getEventState() const { return _eventState; }
