#include "TarnlyApp/Desktop/SingleInstance.hpp"

#include <QDeadlineTimer>
#include <QDir>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>
#include <chrono>

#include "TarnlyApp/Desktop/Display.hpp"

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

constexpr auto answerPatience = 2s;
constexpr auto tryInterval = 50ms;

// A request is one line: what is asked for, and for the panel the desktop's leave to bring it up.
const QByteArray showRequest = "show "_ba;
const QByteArray lookRequest = "look "_ba;
const QByteArray answerText = "here\n"_ba;

/// A person may have logged in several times; each login has a display of its own.
QString instanceName() { return u"tarnly"_s + displayName(); }

int milliseconds(std::chrono::milliseconds duration) { return static_cast<int>(duration.count()); }

} // namespace

SingleInstance::SingleInstance(const QString& folder)
    : socket_(QDir(folder).filePath(instanceName() + u".socket"_s)),
      lock_(QDir(folder).filePath(instanceName() + u".lock"_s)) {
    lock_.setStaleLockTime(0); // however old: a lock is void when its holder has ended
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server_, &QLocalServer::newConnection, this, &SingleInstance::answer);
}

QString SingleInstance::runtimeFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
}

SingleInstance::Outcome SingleInstance::claim(bool asksForPanel, std::chrono::milliseconds patience) {
    const auto request = asksForPanel ? showRequest + activationToken() : lookRequest;
    const QDeadlineTimer deadline(patience);
    do {
        if (lock_.tryLock(0ms)) return server_.listen(socket_) ? Outcome::first : Outcome::unknown;
        if (lock_.error() != QLockFile::LockFailedError) return Outcome::unknown;
        if (tell(request + '\n')) return Outcome::toldFirst;
        QThread::msleep(static_cast<unsigned long>(tryInterval.count()));
    } while (!deadline.hasExpired());
    return Outcome::noAnswer;
}

bool SingleInstance::tell(const QByteArray& request) {
    QLocalSocket socket;
    socket.connectToServer(socket_);
    if (!socket.waitForConnected(milliseconds(answerPatience))) return false;
    socket.write(request);
    return socket.waitForReadyRead(milliseconds(answerPatience)) && socket.readAll() == answerText;
}

void SingleInstance::answer() {
    auto* socket = server_.nextPendingConnection();
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
        if (!socket->canReadLine()) return;
        const auto request = socket->readLine();
        socket->write(answerText);
        if (request.startsWith(showRequest)) {
            emit panelRequested(request.mid(showRequest.size()).trimmed());
        }
    });
}

} // namespace tarnly
