#include "TarnlyApp/Desktop/SettingsWindow.hpp"

#include <QCheckBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QRegularExpression>
#include <QShortcut>
#include <QVBoxLayout>
#include <utility>

#include "TarnlyApp/Desktop/ReadableColours.hpp"
#include "TarnlyApp/Desktop/ScrollingPart.hpp"
#include "TarnlyApp/Desktop/WindowParts.hpp"
#include "TarnlyApp/SettingRules.hpp"
#include "TarnlyPlatform/Net/NetworkAddresses.hpp"

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;

constexpr int formWidth = 420;
constexpr int betweenSections = 2;
constexpr int betweenRows = 1;
constexpr int betweenParts = 4; // it fits on a small screen

/// What the help says where the command line wins.
template <typename Value>
QString helpOr(const QString& help, const std::optional<Value>& option, const QString& shown) {
    return option ? SettingsWindow::tr("For this run the command line says %1.").arg(shown) : help;
}

QString shownNumber(const std::optional<std::uint16_t>& number) {
    return QString::number(number.value_or(0));
}

QString shownPath(const std::optional<std::filesystem::path>& path) {
    return path ? QString::fromStdString(path->string()) : QString();
}

std::vector<std::string> wordsOf(const std::string& text) {
    static const QRegularExpression blanks(u"[\\s,]+"_s);
    std::vector<std::string> words;
    for (const auto& word : QString::fromStdString(text).split(blanks, Qt::SkipEmptyParts))
        words.push_back(word.toStdString());
    return words;
}

} // namespace

SettingsWindow::SettingsWindow(SettingsStore& store, const CompanionOptions& options)
    : store_(store), caption_(new CaptionLabel) {
    setWindowTitle(tr("Tarnly Settings"));
    auto* all = new QWidget;
    groups_ = new QVBoxLayout(all);
    groups_->setSpacing(betweenParts);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(windowPadding, windowPadding, windowPadding, windowPadding);
    layout->addWidget(new ScrollingPart(all, tr("Settings")));
    new ReadableColours(*this);
    addPairing();
    addNetwork(options);
    addSimulator(options);
    addStart();
    for (const auto& keys : {QKeySequence(Qt::Key_Escape), QKeySequence(QKeySequence::Close)}) {
        connect(new QShortcut(keys, this), &QShortcut::activated, this, &QWidget::close);
    }
    showWhetherPasswordIsSet();
}

SettingsWindow::~SettingsWindow() { commit(); }

QFormLayout* SettingsWindow::addGroup(const QString& title) {
    if (groups_->count() > 0) groups_->addSpacing(betweenSections);
    groups_->addWidget(new HeadlineLabel(title));
    auto* form = new QFormLayout;
    form->setVerticalSpacing(betweenRows);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    groups_->addLayout(form);
    return form;
}

void SettingsWindow::addPairing() {
    auto* password = new QLineEdit(QString::fromStdString(store_.password()));
    password->setEchoMode(QLineEdit::Password);
    caption_->setWordWrap(false); // its texts are short, and a wrapping one costs the form its exact height
    auto* form = addGroup(tr("Pairing"));
    form->addRow(tr("Password"), password);
    form->addRow(QString(), caption_);
    connect(password, &QLineEdit::textChanged, this, &SettingsWindow::changePassword);
}

void SettingsWindow::addNetwork(const CompanionOptions& options) {
    auto* form = addGroup(tr("Network"));
    addText(*form,
            {tr("Name"),
             helpOr(tr("By which tablets find this computer."), options.name,
                    QString::fromStdString(options.name.value_or(""))),
             QString::fromStdString(hostName())},
            &AppSettings::name, nameFault);
    auto* advertise = new QCheckBox(tr("Let tablets find this computer"));
    advertise->setChecked(store_.current().advertise.value_or(true));
    connect(advertise, &QCheckBox::toggled, this, [this](bool on) {
        store_.set(&AppSettings::advertise, on ? std::nullopt : std::optional(false));
    });
    form->addRow(QString(), advertise);
    form->addRow(QString(),
                 new CaptionLabel(!options.advertises   ? tr("Else its address has to be typed there.")
                                  : *options.advertises ? tr("For this run the command line says yes.")
                                                        : tr("For this run the command line says no.")));
    addNumber(*form,
              {tr("Port"),
               helpOr(tr("Takes effect at the next start. Empty: 28086, or the next free one."), options.port,
                      shownNumber(options.port)),
               u"28086"_s},
              &AppSettings::port, portFault);
    addOrigins(*form, options);
}

void SettingsWindow::addSimulator(const CompanionOptions& options) {
    auto* form = addGroup(tr("Simulator"));
    addText(*form,
            {tr("Computer"),
             helpOr(tr("On which it runs. Takes effect at the next start."), options.simulatorHost,
                    QString::fromStdString(options.simulatorHost.value_or(""))),
             u"127.0.0.1"_s},
            &AppSettings::simulatorHost, hostFault);
    addNumber(*form,
              {tr("Web port"),
               helpOr(tr("Of its web API. Takes effect at the next start."), options.simulatorPort,
                      shownNumber(options.simulatorPort)),
               u"8086"_s},
              &AppSettings::simulatorPort, simulatorPortFault);
    addText(*form,
            {tr("Saved flights"),
             helpOr(tr("Empty: those of the simulator on this computer."), options.situationsFolder,
                    shownPath(options.situationsFolder)),
             QString(), SettingField::Choice::folder, tr("Choose saved flights")},
            &AppSettings::situationsFolder, pathFault);
    addText(*form,
            {tr("Fixes"),
             helpOr(tr("The navigation database, for scripts that name fixes."), options.navigationDatabase,
                    shownPath(options.navigationDatabase)),
             QString(), SettingField::Choice::file, tr("Choose fixes")},
            &AppSettings::navigationDatabase, pathFault);
}

void SettingsWindow::addStart() {
    auto* startAtLogin = new QCheckBox(tr("Start Tarnly at login"));
    startAtLogin->setChecked(store_.startAtLogin());
    connect(startAtLogin, &QCheckBox::toggled, this, [this](bool on) { store_.setStartAtLogin(on); });
    auto* form = addGroup(tr("Start"));
    form->addRow(startAtLogin);
    form->addRow(new CaptionLabel(tr("In the tray, with these settings.")));
}

void SettingsWindow::addText(QFormLayout& form, SettingField::Description description, Text setting,
                             SettingField::Fault fault) {
    const auto content = QString::fromStdString((store_.current().*setting).value_or(""));
    auto keep = [this, setting](std::optional<std::string> text) { store_.set(setting, std::move(text)); };
    fields_.push_back(
        new SettingField(form, std::move(description), content, std::move(fault), std::move(keep)));
}

void SettingsWindow::addNumber(QFormLayout& form, SettingField::Description description, Number setting,
                               std::function<Phrase(std::int64_t)> fault) {
    const auto& present = store_.current().*setting;
    const auto content = present ? QString::number(*present) : QString();
    auto faultOfText = [fault = std::move(fault)](const std::string& text) {
        bool isNumber = false;
        const auto number = QString::fromStdString(text).toLongLong(&isNumber);
        return fault(isNumber ? number : -1);
    };
    auto keep = [this, setting](const std::optional<std::string>& text) {
        store_.set(setting, text ? std::optional<std::int64_t>(QString::fromStdString(*text).toLongLong())
                                 : std::nullopt);
    };
    fields_.push_back(
        new SettingField(form, std::move(description), content, std::move(faultOfText), std::move(keep)));
}

void SettingsWindow::addOrigins(QFormLayout& form, const CompanionOptions& options) {
    QStringList present;
    for (const auto& origin : store_.current().allowedOrigins.value_or(std::vector<std::string>()))
        present += QString::fromStdString(origin);
    const auto help = options.allowedOrigins.empty()
                          ? tr("Which may connect, such as https://example.com; others are kept out.")
                          : tr("For this run the command line says which may connect.");
    auto fault = [](const std::string& text) {
        for (const auto& origin : wordsOf(text))
            if (auto wanted = originFault(origin); !wanted.empty()) return wanted;
        return Phrase();
    };
    auto keep = [this](const std::optional<std::string>& text) {
        store_.set(&AppSettings::allowedOrigins, text ? std::optional(wordsOf(*text)) : std::nullopt);
    };
    fields_.push_back(new SettingField(form, {tr("Web pages"), help, QString()}, present.join(u' '),
                                       std::move(fault), std::move(keep)));
}

void SettingsWindow::showEvent(QShowEvent* event) {
    fitContent(*this, formWidth);
    QWidget::showEvent(event);
}

void SettingsWindow::hideEvent(QHideEvent* event) {
    commit();
    QWidget::hideEvent(event);
}

void SettingsWindow::commit() {
    for (auto* field : fields_)
        field->commit();
}

void SettingsWindow::changePassword(const QString& password) {
    store_.setPassword(password.toStdString());
    showWhetherPasswordIsSet();
}

void SettingsWindow::showWhetherPasswordIsSet() {
    caption_->showText(store_.password().empty() ? tr("Not set — open pairing.") : tr("Set."));
}

} // namespace tarnly
