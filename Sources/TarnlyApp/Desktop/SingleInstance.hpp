#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QString>
#include <chrono>

namespace tarnly {

/// Sees to it that the application runs once on a person's desktop: the first one is told when it is started
/// again.
class SingleInstance : public QObject {
    Q_OBJECT

  public:
    enum class Outcome {
        /// There is no other: go on.
        first,
        /// The first one knows.
        toldFirst,
        /// There is another, and it does not answer.
        noAnswer,
        /// There is no folder to tell whether there is another.
        unknown
    };

    /// `folder` is the person's own.
    explicit SingleInstance(const QString& folder);

    /// Waits for one that starts or ends just now. Without `asksForPanel` the first one is only looked for.
    Outcome claim(bool asksForPanel, std::chrono::milliseconds patience = std::chrono::seconds(6));

    /// The folder for it, which the system makes when the person logs in, and removes at the end.
    static QString runtimeFolder();

  signals:
    /// `activationToken` is what the desktop gave to the second start, so that it may bring up a window; may
    /// be empty.
    void panelRequested(const QByteArray& activationToken);

  private:
    bool tell(const QByteArray& request);
    void answer();

    const QString socket_;
    QLockFile lock_;
    QLocalServer server_;
};

} // namespace tarnly
