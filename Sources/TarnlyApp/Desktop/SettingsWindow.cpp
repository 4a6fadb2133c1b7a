#include "TarnlyApp/Desktop/SettingsWindow.hpp"

#include <QCheckBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QShortcut>
#include <QVBoxLayout>

#include "TarnlyApp/Desktop/WindowParts.hpp"

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;

constexpr int padding = 20;
constexpr int formWidth = 420;
constexpr int betweenSections = 12;

} // namespace

SettingsWindow::SettingsWindow(SettingsStore& store) : store_(store), caption_(new CaptionLabel) {
    setWindowTitle(u"Tarnly Settings"_s);
    auto* password = new QLineEdit(QString::fromStdString(store_.password()));
    password->setEchoMode(QLineEdit::Password);
    caption_->setWordWrap(false); // its texts are short, and a wrapping one costs the form its exact height
    auto* startAtLogin = new QCheckBox(u"Start Tarnly at login"_s);
    startAtLogin->setChecked(store_.startAtLogin());

    auto* pairing = new QFormLayout;
    pairing->addRow(u"Password"_s, password);
    pairing->addRow(QString(), caption_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(padding, padding, padding, padding);
    layout->addWidget(new HeadlineLabel(u"Pairing"_s));
    layout->addLayout(pairing);
    layout->addSpacing(betweenSections);
    layout->addWidget(startAtLogin);

    connect(password, &QLineEdit::textChanged, this, &SettingsWindow::changePassword);
    connect(startAtLogin, &QCheckBox::toggled, this, [this](bool on) { store_.setStartAtLogin(on); });
    for (const auto& keys : {QKeySequence(Qt::Key_Escape), QKeySequence(QKeySequence::Close)}) {
        connect(new QShortcut(keys, this), &QShortcut::activated, this, &QWidget::close);
    }
    showWhetherPasswordIsSet();
}

void SettingsWindow::showEvent(QShowEvent* event) {
    fitContent(*this, formWidth);
    QWidget::showEvent(event);
}

void SettingsWindow::changePassword(const QString& password) {
    store_.setPassword(password.toStdString());
    showWhetherPasswordIsSet();
}

void SettingsWindow::showWhetherPasswordIsSet() {
    caption_->showText(store_.password().empty() ? u"Not set — open pairing."_s : u"Set."_s);
}

} // namespace tarnly
