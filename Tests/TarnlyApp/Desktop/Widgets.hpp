#pragma once

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPalette>
#include <QRegularExpression>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <string>
#include <vector>

#include "TarnlyPlatform/Net/NetworkAddresses.hpp"

namespace tarnly::test {

/// What a screen reader reads of the labels and buttons of a window, from top to bottom and, in a line, from
/// left to right.
inline std::vector<std::string> textsFromTop(const QWidget& window) {
    std::vector<std::pair<QPoint, std::string>> texts;
    for (const auto* widget : window.findChildren<QWidget*>()) {
        const auto* label = qobject_cast<const QLabel*>(widget);
        const auto* button = qobject_cast<const QAbstractButton*>(widget);
        if ((label == nullptr && button == nullptr) || widget->isHidden()) continue;
        const auto shown = label != nullptr ? label->text() : button->text();
        const auto spoken = widget->accessibleName().isEmpty() ? shown : widget->accessibleName();
        texts.emplace_back(widget->mapTo(&window, QPoint()), spoken.toStdString());
    }
    std::ranges::sort(texts, {}, [](const auto& text) { return std::pair(text.first.y(), text.first.x()); });
    std::vector<std::string> result;
    for (auto& text : texts)
        result.push_back(std::move(text.second));
    return result;
}

/// All that the windows of the program say, seen or not.
inline QStringList textsOfAllWindows() {
    QStringList texts;
    for (const auto* widget : QApplication::allWidgets()) {
        texts << widget->windowTitle() << widget->toolTip() << widget->whatsThis() << widget->accessibleName()
              << widget->accessibleDescription();
        if (const auto* label = qobject_cast<const QLabel*>(widget)) texts << label->text();
        if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) texts << button->text();
        if (const auto* group = qobject_cast<const QGroupBox*>(widget)) texts << group->title();
        if (const auto* edit = qobject_cast<const QLineEdit*>(widget)) texts << edit->placeholderText();
        for (const auto* action : widget->actions())
            texts << action->text();
    }
    texts.removeAll(QString());
    return texts;
}

/// The words of `text` in plain letters, without those that are the same in every language.
inline QStringList plainWords(QString text) {
    static const QRegularExpression same(
        QStringLiteral("Tarnly|https?://[a-z0-9.:]*|ws://[^ ]*|/home/pilot|[A-Za-z]*@[a-z]*|Cancel|&?OK"));
    static const QRegularExpression word(QStringLiteral("[A-Za-z]{2,}"));
    QStringList words;
    text.remove(same).remove(QString::fromStdString(hostName()));
    for (auto found = word.globalMatch(text); found.hasNext();)
        words += found.next().captured();
    return words;
}

inline std::vector<std::string> plainWordsOfAllWindows() {
    std::vector<std::string> words;
    for (const auto& text : textsOfAllWindows()) {
        for (const auto& word : plainWords(text))
            words.push_back(word.toStdString());
    }
    return words;
}

/// Qt tells widgets of a new palette only while the application runs.
inline void setPaletteWhileRunning(const QPalette& palette) {
    QTimer::singleShot(0, qApp, [&] {
        QApplication::setPalette(palette);
        QTimer::singleShot(0, qApp, [] { QApplication::exit(); });
    });
    QApplication::exec();
}

} // namespace tarnly::test
