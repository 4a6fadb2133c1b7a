#include "TarnlyApp/Desktop/SettingField.hpp"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <chrono>
#include <utility>

#include "TarnlyApp/Desktop/WindowParts.hpp"
#include "TarnlyApp/Desktop/Wording.hpp"

namespace tarnly {
namespace {

/// Of a person who types, and is done.
constexpr std::chrono::milliseconds typingPause{800};

} // namespace

SettingField::SettingField(QFormLayout& form, Description description, const QString& content, Fault fault,
                           Keep keep)
    : QObject(form.parentWidget()),
      description_(std::move(description)),
      fault_(std::move(fault)),
      keep_(std::move(keep)),
      edit_(new QLineEdit(content)),
      caption_(new CaptionLabel(description_.help)) {
    edit_->setPlaceholderText(description_.usual);
    edit_->setAccessibleName(description_.label);
    edit_->setAccessibleDescription(description_.help);
    auto* label = new QLabel(description_.label);
    label->setBuddy(edit_);
    auto* row = new QHBoxLayout;
    row->addWidget(edit_);
    if (description_.choice != Choice::nothing) {
        auto* button = new QPushButton(tr("Choose…"));
        button->setAccessibleName(description_.choosing);
        connect(button, &QPushButton::clicked, this, &SettingField::choose);
        row->addWidget(button);
    }
    form.addRow(label, row);
    form.addRow(QString(), caption_);
    pause_.setSingleShot(true);
    pause_.setInterval(typingPause);
    connect(&pause_, &QTimer::timeout, this, &SettingField::commit);
    connect(edit_, &QLineEdit::textChanged, this, &SettingField::follow);
    connect(edit_, &QLineEdit::editingFinished, this, &SettingField::commit);
}

void SettingField::follow() {
    const auto fault = text().empty() ? Phrase() : fault_(text());
    const auto shown = fault.empty() ? description_.help : tr("Not saved: %1.").arg(inWords(fault));
    caption_->showText(shown);
    edit_->setAccessibleDescription(shown);
    isEdited_ = true;
    pause_.start();
}

void SettingField::commit() {
    pause_.stop();
    auto typed = text();
    if (!isEdited_ || (!typed.empty() && !fault_(typed).empty())) return;
    isEdited_ = false;
    keep_(typed.empty() ? std::nullopt : std::optional(std::move(typed)));
}

void SettingField::choose() {
    const auto chosen = description_.choice == Choice::folder
                            ? QFileDialog::getExistingDirectory(edit_, description_.label, edit_->text())
                            : QFileDialog::getOpenFileName(edit_, description_.label, edit_->text());
    if (chosen.isEmpty()) return;
    edit_->setText(chosen);
    commit();
}

} // namespace tarnly
