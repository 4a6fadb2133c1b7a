#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QString>

namespace tarnly {

/// Sees to it that the application runs once in a person's desktop session: the first one is told when it is
/// started again.
class SingleInstance : public QObject {
    Q_OBJECT

  public:
    enum class Outcome {
        /// There is no other: go on.
        first,
        /// The first one knows.
        toldFirst,
        /// There is another, and it does not answer.
        noAnswer
    };

    /// `folder` is the person's own and exists.
    explicit SingleInstance(const QString& folder);

    /// Waits some seconds for one that starts or ends just now. Without `asksForPanel` the first one is only
    /// looked for.
    Outcome claim(bool asksForPanel);

    /// The folder for it, which the session's system makes and removes.
    static QString sessionFolder();

  signals:
    void panelRequested();

  private:
    bool listen();
    bool tell(const QByteArray& request);
    void answer();

    const QString socket_;
    QLockFile lock_;
    QLocalServer server_;
};

} // namespace tarnly
