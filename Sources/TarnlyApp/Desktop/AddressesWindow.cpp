#include "TarnlyApp/Desktop/AddressesWindow.hpp"

#include <QClipboard>
#include <QGuiApplication>
#include <QListWidget>
#include <QPushButton>
#include <QShortcut>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <algorithm>
#include <chrono>

#include "TarnlyApp/Desktop/QrCodeWidget.hpp"
#include "TarnlyApp/Desktop/ReadableColours.hpp"
#include "TarnlyApp/Desktop/ScrollingPart.hpp"
#include "TarnlyApp/Desktop/WindowParts.hpp"

namespace tarnly {
namespace {

constexpr int addressesWidth = 340;
constexpr int shownRows = 4;
constexpr auto confirmationTime = std::chrono::seconds(2);

QStringList asStringList(const std::vector<std::string>& urls) {
    QStringList result;
    for (const auto& url : urls)
        result += QString::fromStdString(url);
    return result;
}

QString explanation(const RuntimeModel& runtime, bool hasAddresses) {
    if (!runtime.port()) return AddressesWindow::tr("Tarnly is not listening.");
    if (!hasAddresses) return AddressesWindow::tr("This computer is not connected to a network.");
    if (runtime.hasLessonPage()) {
        return AddressesWindow::tr(
            "Scan the code with a phone or tablet, or open one of these addresses in its browser: that is "
            "the "
            "lesson page. An application that does not find Tarnly by itself takes the address, too; some "
            "want "
            "ws:// in place of http://.");
    }
    return AddressesWindow::tr(
        "Where a client does not find Tarnly by itself, enter one of these addresses there, or scan the "
        "code.");
}

void add(QListWidget& list, const QStringList& addresses) {
    for (const auto& address : addresses) {
        auto* item = new QListWidgetItem(shownAddress(address), &list);
        item->setData(Qt::UserRole, address);
    }
}

QString addressOf(const QListWidgetItem* item) {
    return item == nullptr ? QString() : item->data(Qt::UserRole).toString();
}

QStringList addressesOf(const QListWidget& list) {
    QStringList all;
    for (int row = 0; row < list.count(); ++row)
        all += addressOf(list.item(row));
    return all;
}

} // namespace

AddressesWindow::AddressesWindow(RuntimeModel& runtime)
    : runtime_(runtime),
      explanation_(new CaptionLabel),
      list_(new QListWidget),
      code_(new QrCodeWidget),
      copy_(new QPushButton(tr("Copy"))) {
    setWindowTitle(tr("Tarnly Addresses"));
    list_->setAccessibleName(tr("Addresses"));
    list_->setFixedHeight(shownRows * list_->fontMetrics().lineSpacing() + 4 * list_->frameWidth());

    auto* all = new QWidget;
    auto* column = new QVBoxLayout(all);
    column->addWidget(explanation_);
    column->addWidget(list_);
    column->addWidget(copy_, 0, Qt::AlignLeading);
    column->addWidget(code_, 0, Qt::AlignHCenter);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(windowPadding, windowPadding, windowPadding, windowPadding);
    layout->addWidget(new ScrollingPart(all, windowTitle()));
    new ReadableColours(*this);

    connect(list_, &QListWidget::currentRowChanged, this, &AddressesWindow::showSelected);
    connect(copy_, &QPushButton::clicked, this, &AddressesWindow::copySelected);
    connect(new QShortcut(QKeySequence::Copy, this), &QShortcut::activated, this,
            &AddressesWindow::copySelected);
    for (const auto& keys : {QKeySequence(Qt::Key_Escape), QKeySequence(QKeySequence::Close)}) {
        connect(new QShortcut(keys, this), &QShortcut::activated, this, &QWidget::close);
    }
    connect(&runtime_, &RuntimeModel::statusChanged, this, &AddressesWindow::lookUp);
    timer_.setInterval(std::chrono::seconds(3));
    connect(&timer_, &QTimer::timeout, this, &AddressesWindow::lookUp);
    showSelected();
    lookUp();
}

void AddressesWindow::showEvent(QShowEvent* event) {
    lookUp();
    timer_.start();
    QWidget::showEvent(event);
}

void AddressesWindow::hideEvent(QHideEvent* event) {
    timer_.stop();
    QWidget::hideEvent(event);
}

void AddressesWindow::lookUp() {
    const auto found = asStringList(runtime_.peoplesAddresses());
    explanation_->showText(explanation(runtime_, !found.isEmpty()));
    if (found != addressesOf(*list_)) {
        const auto row = std::max<qsizetype>(0, found.indexOf(selected()));
        const QSignalBlocker untilComplete(list_); // what is hidden meanwhile would lose the focus
        list_->clear();
        add(*list_, found);
        list_->setCurrentRow(static_cast<int>(row));
        showSelected();
    }
    fitContent(*this, addressesWidth);
}

void AddressesWindow::showSelected() {
    const bool hasOne = !selected().isEmpty();
    list_->setVisible(hasOne);
    copy_->setVisible(hasOne);
    code_->setVisible(hasOne);
    code_->showCode(selected().toStdString());
}

void AddressesWindow::copySelected() {
    if (selected().isEmpty()) return;
    QGuiApplication::clipboard()->setText(selected());
    copy_->setText(tr("Copied"));
    QTimer::singleShot(confirmationTime, copy_, [this] { copy_->setText(tr("Copy")); });
}

QString AddressesWindow::selected() const { return addressOf(list_->currentItem()); }

} // namespace tarnly
