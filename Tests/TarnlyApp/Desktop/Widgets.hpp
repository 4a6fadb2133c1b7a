#pragma once

#include <QAbstractButton>
#include <QLabel>
#include <QWidget>
#include <algorithm>
#include <string>
#include <vector>

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

} // namespace tarnly::test
