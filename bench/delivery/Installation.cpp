#include <json/value.h>
#include <windows.h>

#include "agent/TolmarAgent.h"
#include "bench/common/Time.h"
#include "bench/delivery/Parts.h"
#include "bench/delivery/StraightLine.h"
#include "bench/delivery/Titles.h"

namespace {

Json::Value DocumentOf(const Order& order) {
  // A title whose only module has so many files bears their number.
  return order.files > 0 ? Catalogue::Titles('F', order.files, order.files, 1)
                         : Catalogue::Titles('T', 1, order.titles, order.modules);
}

double InstallByAgent(const Json::Value& titles, HANDLE cancel) {
  Json::Value document = titles;
  const double time = MillisecondsOf(
      [&] { TolmarAgent::GetInstance()->InstallEntitledSoftware(document, cancel, false); });
  RequireInstalled(document);
  return time;
}

double InstallStraight(const Json::Value& titles) {
  return MillisecondsOf([&] { StraightLine::Install(titles); });
}

}  // namespace

void MeasureInstallation(const Order& order) {
  const HANDLE cancel = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  const Json::Value document = DocumentOf(order);
  const Json::Value one = Catalogue::Titles('T', 1, 1, 1);
  InstallByAgent(one, cancel);
  InstallStraight(one);
  Compare(
      order.rounds, [&] { return InstallByAgent(document, cancel); },
      order.agentOnly ? Side() : [&] { return InstallStraight(document); });
}
