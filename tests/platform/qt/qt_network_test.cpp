// Transfers from servers of the test's own.
#include "platform/qt/qt_network.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslServer>
#include <QTcpServer>
#include <QTcpSocket>
#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/platform/qt/run_until.h"
#include "tests/support/program.h"
#include "tests/support/scratch_folder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::string replyOf(const std::string& body, const std::string& headers = "") {
  return "HTTP/1.1 200 OK\r\n" + headers + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string redirection(const std::string& address) {
  return "HTTP/1.1 302 Found\r\nLocation: " + address + "\r\nContent-Length: 4\r\n\r\nmove";
}

// Sends a fixed reply for each path and closes the connection, unless it is told to keep it open.
class Server {
 public:
  explicit Server(std::unique_ptr<QTcpServer> server = std::make_unique<QTcpServer>()) : server_(std::move(server)) {
    EXPECT_TRUE(server_->listen(QHostAddress::LocalHost));
    QObject::connect(server_.get(), &QTcpServer::pendingConnectionAvailable, [this] { accept(); });
  }
  std::string address(const std::string& path, const std::string& scheme = "http") const {
    return scheme + "://127.0.0.1:" + std::to_string(server_->serverPort()) + path;
  }

  std::map<std::string, std::string> replies;
  bool closes = true;
  std::vector<std::string> requests;
  int connectionsEnded = 0;

 private:
  void accept() {
    QTcpSocket* const socket = server_->nextPendingConnection();
    QObject::connect(socket, &QTcpSocket::disconnected, [this] { ++connectionsEnded; });
    QObject::connect(socket, &QTcpSocket::readyRead, [this, socket] {
      requests.push_back(socket->readAll().toStdString());
      const std::string& request = requests.back();
      const std::string path = request.substr(4, request.find(' ', 4) - 4);
      socket->write(QByteArray::fromStdString(replies[path]));
      if (closes) socket->disconnectFromHost();
    });
  }

  std::unique_ptr<QTcpServer> server_;
};

class QtNetworkTest : public testing::Test {
 protected:
  TransferHandlers handlers() {
    return {.mayFollowTo =
                [this](const std::string& address) {
                  redirections_.push_back(address);
                  return mayFollow_;
                },
            .received =
                [this](std::string_view bytes) {
                  body_ += bytes;
                  return true;
                },
            .finished =
                [this](const std::optional<std::string>& failure) {
                  ++endings_;
                  failure_ = failure.value_or("");
                }};
  }
  void read(const std::string& address) {
    body_.clear();
    failure_.clear();
    endings_ = 0;
    transfer_ = network_.get(address, handlers());
    EXPECT_EQ(endings_, 0) << "get() itself calls no handler";
    EXPECT_TRUE(runUntil([this] { return endings_ > 0; }));
  }

  Server server_;
  QtNetwork network_;
  std::unique_ptr<Transfer> transfer_;
  bool mayFollow_ = true;
  std::vector<std::string> redirections_;
  std::string body_;
  int endings_ = 0;
  std::string failure_;
};

TEST_F(QtNetworkTest, handsOnAllBytes) {
  std::string body(3'000'000, 'x');
  body[1'500'000] = '\0';
  server_.replies["/feed"] = replyOf(body, "Set-Cookie: a=b\r\n");
  read(server_.address("/feed"));
  EXPECT_TRUE(body_ == body);
  EXPECT_EQ(failure_, "");
  read(server_.address("/feed"));
  ASSERT_EQ(server_.requests.size(), 2U);
  EXPECT_THAT(server_.requests[1], HasSubstr("User-Agent: Quillery/"));
  EXPECT_THAT(server_.requests[1], Not(HasSubstr("Cookie")));
}

TEST_F(QtNetworkTest, decompressesNothing) {
  server_.replies["/feed"] = replyOf("not gzip at all", "Content-Encoding: gzip\r\n");
  read(server_.address("/feed"));
  EXPECT_EQ(body_, "not gzip at all");
  EXPECT_EQ(failure_, "");
}

TEST_F(QtNetworkTest, aBodyThatEndsEarlyFails) {
  server_.replies["/feed"] = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf";
  read(server_.address("/feed"));
  EXPECT_EQ(body_, "half");
  EXPECT_EQ(failure_, "The server “127.0.0.1” closed the connection before everything had arrived.");
}

TEST_F(QtNetworkTest, anErrorOfTheServerFailsWithoutItsWords) {
  server_.replies["/feed"] = "HTTP/1.1 404 <b>words</b>\r\nContent-Length: 4\r\n\r\nword";
  read(server_.address("/feed"));
  EXPECT_EQ(failure_, "The server “127.0.0.1” replied with the status 404.");
  EXPECT_EQ(body_, "");
  server_.replies["/feed"] = "HTTP/1.1 401 No\r\nWWW-Authenticate: Basic realm=\"x\"\r\nContent-Length: 0\r\n\r\n";
  read(server_.address("/feed"));
  EXPECT_EQ(failure_, "The server “127.0.0.1” replied with the status 401.");
}

TEST_F(QtNetworkTest, whatIsNoHttpFails) {
  server_.replies["/feed"] = "220 mail.example.com\r\n";
  read(server_.address("/feed"));
  EXPECT_THAT(failure_, Not(IsEmpty()));
  EXPECT_EQ(body_, "");
}

TEST_F(QtNetworkTest, anUnreachableServerFails) {
  const std::string address = Server().address("/feed");
  read(address);
  EXPECT_EQ(failure_, "The server “127.0.0.1” couldn’t be read: Connection refused.");
  for (const char* const broken : {"", "feed", "https://", "unknown:feed"}) {
    read(broken);
    EXPECT_THAT(failure_, Not(IsEmpty())) << broken;
  }
  EXPECT_EQ(body_, "");
}

TEST_F(QtNetworkTest, aSilentServerFails) {
  QtNetwork impatient(std::chrono::milliseconds(50));
  server_.closes = false;
  server_.replies["/feed"] = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf";
  for (const std::string path : {"/feed", "/nothing"}) {
    failure_.clear();
    endings_ = 0;
    transfer_ = impatient.get(server_.address(path), handlers());
    EXPECT_TRUE(runUntil([this] { return endings_ > 0; }));
    EXPECT_EQ(failure_, "The server “127.0.0.1” has stopped sending.");
  }
}

TEST_F(QtNetworkTest, followsAllowedRedirections) {
  server_.replies["/0"] = redirection("/1");
  server_.replies["/1"] = redirection(server_.address("/2"));
  server_.replies["/2"] = redirection("/3");
  server_.replies["/3"] = redirection("4");
  server_.replies["/4"] = redirection("/new%20place");
  server_.replies["/new%20place"] = replyOf("content");
  for (const bool closes : {true, false}) {
    server_.closes = closes;
    redirections_.clear();
    read(server_.address("/0"));
    EXPECT_EQ(body_, "content");
    EXPECT_EQ(failure_, "");
    EXPECT_THAT(redirections_, ElementsAre(server_.address("/1"), server_.address("/2"), server_.address("/3"),
                                           server_.address("/4"), server_.address("/new%20place")));
  }
}

TEST_F(QtNetworkTest, aRefusedRedirectionFails) {
  mayFollow_ = false;
  server_.replies["/feed"] = redirection("http://example.com/%E2%80%AEelsewhere");
  read(server_.address("/feed"));
  EXPECT_THAT(failure_,
              HasSubstr("The server redirects to “http://example.com/\\u{202E}elsewhere”, which isn’t allowed."));
  EXPECT_THAT(server_.requests, testing::SizeIs(1));
  EXPECT_EQ(body_, "");
}

TEST_F(QtNetworkTest, redirectionsLeadToNoFileAndEnd) {
  server_.replies["/file"] = redirection("file:///etc/passwd");
  read(server_.address("/file"));
  EXPECT_THAT(failure_, Not(IsEmpty()));
  server_.replies["/circle"] = redirection("/circle");
  read(server_.address("/circle"));
  EXPECT_EQ(failure_, "The server redirects too often.");
  EXPECT_EQ(body_, "");
}

TEST_F(QtNetworkTest, destroyingATransferCancelsIt) {
  server_.closes = false;
  server_.replies["/feed"] = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf";
  transfer_ = network_.get(server_.address("/feed"), handlers());
  EXPECT_TRUE(runUntil([this] { return body_ == "half"; }));
  transfer_.reset();
  EXPECT_TRUE(runUntil([this] { return server_.connectionsEnded == 1; }));
  EXPECT_EQ(endings_, 0);
}

TEST_F(QtNetworkTest, anyHandlerMayDestroyTheTransfer) {
  server_.replies["/redirected"] = redirection("/feed");
  server_.replies["/feed"] = replyOf("content");
  for (const std::string path : {"/redirected", "/feed", "/feed", "/nothing"}) {
    int calls = 0;
    const auto destroy = [&, canary = std::string(100, 'x')] {
      transfer_.reset();
      EXPECT_EQ(canary, std::string(100, 'x'));
      ++calls;
    };
    const bool destroysLate = path == "/feed" && body_.empty();
    transfer_ = network_.get(server_.address(path), {.mayFollowTo =
                                                         [=](const std::string&) {
                                                           destroy();
                                                           return true;
                                                         },
                                                     .received =
                                                         [this, destroy, destroysLate](std::string_view bytes) {
                                                           body_ += bytes;
                                                           if (!destroysLate) destroy();
                                                           return true;
                                                         },
                                                     .finished = [=](const auto&) { destroy(); }});
    EXPECT_TRUE(runUntil([&] { return calls > 0; }));
    EXPECT_EQ(calls, 1);
  }
}

TEST_F(QtNetworkTest, stopsAnEndlessBody) {
  server_.closes = false;
  server_.replies["/feed"] = "HTTP/1.1 200 OK\r\n\r\n" + std::string(8'000'000, 'x');
  TransferHandlers counting = handlers();
  counting.received = [this](std::string_view bytes) {
    body_ += bytes;
    return body_.size() < 1000;
  };
  transfer_ = network_.get(server_.address("/feed"), counting);
  EXPECT_TRUE(runUntil([this] { return server_.connectionsEnded == 1; }));
  EXPECT_LE(body_.size(), 2'000'000U);
  EXPECT_EQ(endings_, 0);
}

TEST_F(QtNetworkTest, refusesAnUntrustedCertificate) {
  const ScratchFolder folder;
  const std::string key = folder.path() + "/key.pem";
  const std::string certificate = folder.path() + "/certificate.pem";
  const Ending made = run("/usr/bin/openssl", {"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
                                               "-nodes", "-subj", "/CN=127.0.0.1", "-addext",
                                               "subjectAltName=IP:127.0.0.1", "-keyout", key, "-out", certificate});
  ASSERT_EQ(made.status, 0) << made.output;
  QFile keyFile(QString::fromStdString(key));
  ASSERT_TRUE(keyFile.open(QFile::ReadOnly));
  QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
  configuration.setPrivateKey(QSslKey(&keyFile, QSsl::Ec));
  configuration.setLocalCertificateChain(QSslCertificate::fromPath(QString::fromStdString(certificate)));
  auto secure = std::make_unique<QSslServer>();
  secure->setSslConfiguration(configuration);
  Server server(std::move(secure));
  server.replies["/feed"] = replyOf("content");
  read(server.address("/feed", "https"));
  EXPECT_THAT(failure_, HasSubstr("The server “127.0.0.1” couldn’t be read: "));
  EXPECT_THAT(failure_, HasSubstr("certificate"));
  EXPECT_EQ(body_, "");
  EXPECT_THAT(server.requests, IsEmpty());
}

}  // namespace
