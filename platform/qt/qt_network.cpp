#include "platform/qt/qt_network.h"

#include <QByteArray>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include "platform/product.h"
#include "values/harmless_text.h"

namespace {

constexpr qint64 mostBytesAhead = 1 << 20;
constexpr int mostRedirections = 5;
constexpr int statusOk = 200;

std::string quoted(const QUrl& address) { return "“" + harmlessLine(address.host().toStdString()) + "”"; }

QNetworkRequest requestFor(const QUrl& address, std::chrono::milliseconds longestSilence) {
  QNetworkRequest request(address);
  request.setHeader(QNetworkRequest::UserAgentHeader,
                    QString::fromStdString(std::string(product::name) + "/" + std::string(product::version)));
  request.setRawHeader("Accept-Encoding", "identity");  // otherwise Qt would decompress what a server has compressed
  request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
  request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
  request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
  request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
  request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
  request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
  request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
  request.setTransferTimeout(static_cast<int>(longestSilence.count()));
  return request;
}

int statusOf(const QNetworkReply& reply) {
  return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();  // 0 before there is one
}

// Returns what failed, as a sentence without any words of the server's.
std::string failureOf(const QNetworkReply& reply) {
  const std::string server = "The server " + quoted(reply.url());
  const int status = statusOf(reply);
  switch (reply.error()) {
    case QNetworkReply::HostNotFoundError:
      return server + " couldn’t be found. Check that this computer is connected to the internet.";
    case QNetworkReply::OperationCanceledError:
    case QNetworkReply::TimeoutError: return server + " has stopped sending.";
    case QNetworkReply::RemoteHostClosedError: return server + " closed the connection before everything had arrived.";
    default:
      if (status == 0) return server + " couldn’t be read: " + harmlessLine(reply.errorString().toStdString()) + ".";
      return server + " replied with the status " + std::to_string(status) + ".";
  }
}

// Returns the absolute address to which a reply redirects, or an empty one.
QUrl redirectionOf(const QNetworkReply& reply) {
  const QUrl target = reply.attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
  return target.isEmpty() ? target : reply.url().resolved(target);
}

bool isOfTheWeb(const QUrl& address) { return address.scheme() == "http" || address.scheme() == "https"; }

// Follows redirections itself: Qt 6.4 sometimes ends with neither a body nor an error if somebody else has to allow
// them.
class QtTransfer : public QObject, public Transfer {
 public:
  QtTransfer(std::shared_ptr<QNetworkAccessManager> manager, std::chrono::milliseconds longestSilence,
             TransferHandlers handlers)
      : manager_(std::move(manager)),
        longestSilence_(longestSilence),
        handlers_(std::make_shared<const TransferHandlers>(std::move(handlers))) {}
  ~QtTransfer() override { stop(); }
  QtTransfer(const QtTransfer&) = delete;
  QtTransfer& operator=(const QtTransfer&) = delete;

  void start(const QUrl& address) {
    reply_ = manager_->get(requestFor(address, longestSilence_));
    reply_->setReadBufferSize(mostBytesAhead);
    connect(reply_, &QIODevice::readyRead, this, [this] { readOn(); });
    connect(reply_, &QNetworkReply::finished, this, &QtTransfer::finish);
  }

 private:
  // Every handler may destroy this, and with it itself, so these functions hold the handlers while one runs.
  void redirect(const QUrl& address) {
    const auto handlers = handlers_;
    const QPointer<QtTransfer> self(this);
    const bool mayFollow = handlers->mayFollowTo(address.toString(QUrl::FullyEncoded).toStdString());
    if (!self) return;
    if (!mayFollow || !isOfTheWeb(address))
      return end("The server redirects to “" + harmlessLine(address.toString().toStdString()) +
                 "”, which isn’t allowed.");
    if (++redirections_ > mostRedirections) return end("The server redirects too often.");
    stop();
    start(address);
  }

  // Returns true if all that was sent so far is handed on, and the transfer goes on.
  bool readOn() {
    if (const QUrl target = redirectionOf(*reply_); !target.isEmpty()) return redirect(target), false;
    if (const int status = statusOf(*reply_); status != 0 && status != statusOk) return end(failureOf(*reply_)), false;
    const auto handlers = handlers_;
    const QPointer<QtTransfer> self(this);
    for (QByteArray piece; !(piece = reply_->read(mostBytesAhead)).isEmpty();) {
      const bool goesOn = handlers->received({piece.constData(), static_cast<std::size_t>(piece.size())});
      if (!self) return false;
      if (!goesOn) return stop(), false;
    }
    return true;
  }

  void finish() {
    if (reply_->error() != QNetworkReply::NoError) return end(failureOf(*reply_));
    if (readOn()) end(std::nullopt);
  }

  void end(const std::optional<std::string>& failure) {
    const auto handlers = handlers_;
    stop();
    handlers->finished(failure);
  }

  // Qt forbids to delete a reply while it reports something.
  void stop() {
    QNetworkReply* const reply = std::exchange(reply_, nullptr);
    if (reply == nullptr) return;
    reply->disconnect(this);
    if (reply->error() == QNetworkReply::NoError) reply->abort();
    reply->deleteLater();
  }

  std::shared_ptr<QNetworkAccessManager> manager_;
  std::chrono::milliseconds longestSilence_;
  QNetworkReply* reply_ = nullptr;
  int redirections_ = 0;
  std::shared_ptr<const TransferHandlers> handlers_;
};

}  // namespace

std::unique_ptr<Transfer> QtNetwork::get(const std::string& address, TransferHandlers handlers) {
  auto manager = manager_.lock();
  if (!manager) {
    // Deleted later, because it owns the replies, one of which may be calling a handler.
    manager.reset(new QNetworkAccessManager, [](QNetworkAccessManager* old) { old->deleteLater(); });
    manager_ = manager;
  }
  auto transfer = std::make_unique<QtTransfer>(std::move(manager), longestSilence_, std::move(handlers));
  transfer->start(QUrl(QString::fromStdString(address), QUrl::StrictMode));
  return transfer;
}
