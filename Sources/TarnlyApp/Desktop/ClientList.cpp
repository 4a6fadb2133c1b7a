#include "TarnlyApp/Desktop/ClientList.hpp"

#include <QDateTime>
#include <QGridLayout>
#include <QLocale>
#include <QPushButton>
#include <algorithm>

#include "TarnlyApp/Desktop/WindowParts.hpp"
#include "TarnlyApp/Desktop/Wording.hpp"

namespace tarnly {
namespace {

enum Column { textColumn, buttonColumn, columns };

constexpr int spacing = 8;

QString valuesText(std::int64_t count) { return inWords(Phrase::counted("%n values", "%n value", count)); }

} // namespace

ClientList::ClientList() : grid_(new QGridLayout(this)), more_(new CaptionLabel) {
    grid_->setContentsMargins(0, 0, 0, 0);
    grid_->setHorizontalSpacing(spacing);
    grid_->setColumnStretch(textColumn, 1);
    grid_->addWidget(more_, static_cast<int>(2 * mostShown), textColumn, 1, columns);
    setAccessibleName(tr("Connected clients"));
    while (rows_.size() < mostShown)
        addRow();
    showClients({});
}

void ClientList::showClients(const ClientsStatus& clients) {
    const auto list = clients.list.value_or(std::vector<ClientStatus>());
    const auto shown = std::min(list.size(), mostShown);
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        const bool isShown = i < shown;
        if (isShown) showRow(rows_[i], list[i]);
        rows_[i].address->setVisible(isShown);
        rows_[i].details->setVisible(isShown);
        rows_[i].button->setVisible(isShown);
    }
    showMore(list.size() - shown);
    setVisible(shown > 0);
}

void ClientList::addRow() {
    const auto index = rows_.size();
    Row row{new CaptionLabel, new CaptionLabel, new QPushButton(tr("Disconnect"))};
    row.button->setAccessibleDescription(tr("Ends its connection; it may come back and pair again."));
    const int line = static_cast<int>(2 * index);
    grid_->addWidget(row.address, line, textColumn, Qt::AlignBottom);
    grid_->addWidget(row.details, line + 1, textColumn, Qt::AlignTop);
    grid_->addWidget(row.button, line, buttonColumn, 2, 1, Qt::AlignVCenter);
    connect(row.button, &QPushButton::pressed, this,
            [this, index] { rows_[index].pressedId = rows_[index].id; });
    connect(row.button, &QPushButton::clicked, this,
            [this, index] { emit disconnectRequested(rows_[index].pressedId); });
    rows_.push_back(row);
}

void ClientList::showRow(Row& row, const ClientStatus& client) {
    row.id = client.id;
    const auto address =
        client.address == "127.0.0.1" ? tr("this computer") : QString::fromStdString(client.address);
    row.address->showText(address);
    row.details->showText(tr("since %1, %2").arg(sinceText(client.since), valuesText(client.subscriptions)));
    row.button->setAccessibleName(tr("Disconnect %1").arg(address));
}

void ClientList::showMore(std::size_t hidden) {
    const bool isNeeded = hidden > 0;
    more_->setVisible(isNeeded);
    more_->showText(isNeeded ? tr("and %1 more").arg(hidden) : QString());
}

QString sinceText(const std::string& utc) {
    const auto time = QDateTime::fromString(QString::fromStdString(utc), Qt::ISODate).toLocalTime();
    const QLocale locale;
    const auto clock = locale.toString(time.time(), QLocale::ShortFormat);
    const bool isToday = time.date() == QDate::currentDate();
    return isToday ? clock : locale.toString(time.date(), QLocale::ShortFormat) + QLatin1Char(' ') + clock;
}

} // namespace tarnly
