#include <csignal>
#include <cstdlib>
#include <fstream>

#include "tests/cloudsim/CloudsimProcess.h"

namespace {

class StartTest : public CloudsimTest {};

TEST_F(StartTest, ABadCatalogueEndsItWithOneLineNamingFileAndKey) {
  _folder.Write("there.cab", "x");
  const std::string head = R"({"sessionToken":"s","titles":)";
  const std::string title = head + R"([{"l1FruPn":"T","name":"N","modules":)";
  const std::string module = title + R"([{"moduleFruPn":"M","files":)";
  const struct {
    std::string text, error;
  } rows[] = {
      {"", ""},
      {"{} {}", ""},
      {"[]", "the document: must be an object"},
      {R"({"titles":[]})", "sessionToken: is missing"},
      {R"({"sessionToken":"","titles":[]})", "sessionToken: must be a text"},
      {R"({"sessionToken":"s"})", "titles: is missing"},
      {head + "{}}", "titles: must be an array"},
      {head + R"([], "titels":[]})", "titels: unknown key"},
      {head + R"([], "devices":[""]})", "devices[0]: must be a text"},
      {head + R"([], "faults":[{}]})", "faults[0].on: is missing"},
      {head + R"([{"l1FruPn":"a/b","name":"N","modules":[]}]})", "titles[0].l1FruPn: must not"},
      {title + R"([],"preinstallSw":1}]})", "titles[0].preinstallSw: must be true or false"},
      {title + R"([{"files":[]}]}]})", "titles[0].modules[0].moduleFruPn: is missing"},
      {module + R"(["no.cab"]}]}]})", "titles[0].modules[0].files[0]: cannot read the file"},
      {module + R"(["."]}]}]})", "titles[0].modules[0].files[0]: cannot read the file"},
      {module + R"(["there.cab","there.cab"]}]}]})", "titles[0].modules[0].files[1]: the module"},
      {module + R"([]},{"moduleFruPn":"M","files":[]}]}]})", "titles[0].modules[1]: the title"},
  };
  for (const auto& row : rows) {
    const std::string file = _folder.Write("bad.json", row.text);
    CloudsimProcess program({"--catalogue", file});
    EXPECT_TRUE(program.FirstLine().starts_with("cloudsim: " + file + ": " + row.error))
        << program.FirstLine();
    EXPECT_EQ(program.End(0), 2) << row.text;
  }
}

TEST_F(StartTest, ATakenPortIsAnErrorOfItsOwn) {
  Start();
  const std::string port = std::to_string(_cloud->Port());
  CloudsimProcess second({"--catalogue", _folder.Path("catalogue.json"), "--port", port});
  EXPECT_EQ(second.FirstLine(), "cloudsim: cannot listen on port " + port + " of 127.0.0.1");
  EXPECT_EQ(second.End(0), 1);
}

TEST_F(StartTest, WritesItsPortBeforeItAnnouncesItselfAndEndsOnEitherSignal) {
  for (const int signal : {SIGTERM, SIGINT}) {
    Start("[]", {"--port-file", _folder.Path("port")});
    int port = 0;
    std::ifstream(_folder.Path("port")) >> port;
    EXPECT_EQ(port, _cloud->Port());
    Jwt();  // Leaves a connection open that nobody uses.
    EXPECT_EQ(_cloud->End(signal), 0);
  }
}

TEST_F(StartTest, ServesTlsUnderTheNameLocalhost) {
  const std::string certificate = _folder.Path("tls.crt");
  const std::string key = _folder.Path("tls.key");
  const std::string make =
      "openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=localhost "
      "-addext subjectAltName=DNS:localhost -keyout " +
      key + " -out " + certificate + " 2>/dev/null";
  ASSERT_EQ(std::system(make.c_str()), 0);
  CloudsimProcess program({"--catalogue",
                           _folder.Write("c.json", R"({"sessionToken":"s","titles":[]})"),
                           "--tls-cert", certificate, "--tls-key", key});
  ASSERT_TRUE(program.FirstLine().starts_with("cloudsim: listening on https://localhost:"));
  httplib::SSLClient client("localhost", program.Port());
  client.set_ca_cert_path(certificate);
  const auto reply = client.Post("/token", R"({"sessionToken":"s"})", "application/json");
  ASSERT_TRUE(reply) << httplib::to_string(reply.error());
  EXPECT_EQ(reply->status, 200);
}

}  // namespace
