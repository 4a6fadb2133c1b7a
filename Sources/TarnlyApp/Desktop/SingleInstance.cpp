#include "TarnlyApp/Desktop/SingleInstance.hpp"

#include <QDeadlineTimer>
#include <QDir>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>
#include <chrono>

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

constexpr auto patience = 10s;
constexpr auto answerPatience = 3s;
constexpr auto pause = 50ms;

const QByteArray showRequest = "show\n"_qba;
const QByteArray lookRequest = "look\n"_qba;
const QByteArray answerText = "here\n"_qba;

/// A person may have several sessions at once; each has a display of its own.
QString sessionName() {
    auto display = qEnvironmentVariable("DISPLAY", qEnvironmentVariable("WAYLAND_DISPLAY"));
    for (auto& character : display) {
        if (!character.isLetterOrNumber()) character = u'-';
    }
    return u"tarnly"_s + display;
}

int milliseconds(std::chrono::milliseconds duration) { return static_cast<int>(duration.count()); }

} // namespace

SingleInstance::SingleInstance(const QString& folder)
    : socket_(QDir(folder).filePath(sessionName() + u".socket"_s)),
      lock_(QDir(folder).filePath(sessionName() + u".lock"_s)) {
    lock_.setStaleLockTime(0); // however old: a lock is void when its holder has ended
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server_, &QLocalServer::newConnection, this, &SingleInstance::answer);
}

QString SingleInstance::sessionFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
}

SingleInstance::Outcome SingleInstance::claim(bool asksForPanel) {
    const QDeadlineTimer deadline(patience);
    while (!deadline.hasExpired()) {
        if (lock_.tryLock(0ms)) return listen() ? Outcome::first : Outcome::noAnswer;
        if (tell(asksForPanel ? showRequest : lookRequest)) return Outcome::toldFirst;
        QThread::msleep(static_cast<unsigned long>(pause.count()));
    }
    return Outcome::noAnswer;
}

bool SingleInstance::listen() {
    QLocalServer::removeServer(socket_); // of one that was killed
    return server_.listen(socket_);
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
        if (request == showRequest) emit panelRequested();
    });
}

} // namespace tarnly
