#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "tests/cloudsim/CloudsimProcess.h"

namespace {

class DriveTest : public CloudsimTest {
 protected:
  /// @return the exit status. @param figures out, what was written as JSON. @param name in, where.
  int Drive(const std::string& options, Json::Value& figures, const std::string& name = "figures") {
    const std::string command = "TOLMAR_SESSION_TOKEN=s3cret-session " CLOUDSIM_PROGRAM
                                " drive http://localhost:" +
                                std::to_string(_cloud->Port()) + " --json " + _folder.Path(name) +
                                " " + options + " >/dev/null";
    const int status = std::system(command.c_str());
    std::ifstream file(_folder.Path(name));
    if (file) figures = Parsed(std::string(std::istreambuf_iterator<char>(file), {}));
    return WEXITSTATUS(status);
  }
};

TEST_F(DriveTest, ADeviceHasTheAgentsConversationAndSendsQueriesAgain) {
  Start(R"([{"on":"entitlement","call":1,"count":2,"status":503},
            {"on":"downloadRequest","call":1,"garbage":true}])");
  Json::Value figures;
  EXPECT_EQ(Drive("--devices 1 --wait-scale 0.0001", figures), 0);
  std::string types;
  for (const Json::Value& exchange : Received()) {
    const std::string method = exchange["method"].asString();
    types += (method == "POST" ? exchange["type"].asString() : method) + " ";
  }
  EXPECT_EQ(types,
            "token hasEntitlement entitlement entitlement entitlement downloadRequest "
            "downloadRequest downloadProgress HEAD HEAD GET GET downloadProgress installProgress "
            "installProgress ");
  EXPECT_EQ(figures["complete"], 1);
  EXPECT_EQ(figures["requests"], 15);
  EXPECT_EQ(figures["errors"]["entitlement: status 503"], 2);
  EXPECT_GE(figures["bytes"].asInt(), 300'007);
}

TEST_F(DriveTest, TellsWhoDidNotGetAllAndWhy) {
  Start(R"([{"on":"file:archiver.cab","call":2,"dropAfter":1000},
            {"on":"token","call":5,"status":401},{"on":"entitlement","call":7,"status":404},
            {"on":"entitlement","call":12,
             "reply":"{\"result\":{\"code\":0,\"swList\":[{\"moduleList\":[5]}]}}"},
            {"on":"downloadRequest","call":3,
             "reply":"{\"result\":{\"code\":0,\"fileList\":[{\"size\":-1}]}}"},
            {"on":"downloadRequest","call":16,
             "reply":"{\"result\":{\"code\":0,\"fileList\":[{\"downloadUrl\":\"ftp://a/b\"}]}}"}])");
  Json::Value figures;
  EXPECT_EQ(Drive("--devices 20 --rate 200 --wait-scale 0.0001", figures), 1);
  EXPECT_EQ(figures["devices"], 20);
  EXPECT_EQ(figures["complete"], 15) << figures.toStyledString();
  EXPECT_EQ(figures["errors"].size(), 6U) << figures.toStyledString();
  EXPECT_EQ(figures["errors"]["entitlement: status 404"], 1);
  EXPECT_EQ(figures["errors"]["downloadRequest: refused or not as described"], 1);
  EXPECT_EQ(Drive("--devices 1", figures, "missing/figures"), 2);
}

}  // namespace
