#pragma once

#include <QFormLayout>
#include <QLineEdit>
#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>
#include <optional>
#include <string>

#include "TarnlyPlatform/Base/Phrase.hpp"

namespace tarnly {

class CaptionLabel;

/// A field of the settings window, with a line of help below it. What is typed counts once the person leaves
/// the field, pauses, or closes the window. What cannot be is never kept: the help makes way for what is
/// wanted instead.
///
/// Owned by the window, as Qt does it; belongs to the main thread.
class SettingField : public QObject {
    Q_OBJECT

  public:
    /// What a button beside the field offers to choose.
    enum class Choice { nothing, folder, file };

    struct Description {
        QString label;
        QString help;
        /// Shown where nothing stands in the field: what is usual then.
        QString usual;
        Choice choice = Choice::nothing;
        /// What the button beside it is called where it is not seen.
        QString choosing{};
    };
    /// What is wanted instead of a text, which is not empty: a clause, or nothing where all is well.
    using Fault = std::function<Phrase(const std::string& text)>;
    /// Takes what stands in the field, without blanks around it; absent for none.
    using Keep = std::function<void(std::optional<std::string> text)>;

    /// Adds itself to `form`. `content` is what stands in the field at first.
    SettingField(QFormLayout& form, Description description, const QString& content, Fault fault, Keep keep);

    /// Has what was typed count now.
    void commit();

  private:
    void follow();
    void choose();
    std::string text() const { return edit_->text().trimmed().toStdString(); }

    const Description description_;
    const Fault fault_;
    const Keep keep_;
    QLineEdit* const edit_;
    CaptionLabel* const caption_;
    QTimer pause_;
    /// Since it was kept last.
    bool isEdited_ = false;
};

} // namespace tarnly
