#pragma once

#include <QString>
#include <QWidget>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "TarnlyCore/Protocol/CompanionStatus.hpp"

class QGridLayout;
class QPushButton;

namespace tarnly {

class CaptionLabel;

/// The paired clients, a row each: from where, since when, how many values, and a button that disconnects it.
/// Hidden while there are none; of a crowd it shows the first ones, and how many more there are.
class ClientList : public QWidget {
    Q_OBJECT

  public:
    /// More is a crowd, and no screen has room for it.
    static constexpr std::size_t mostShown = 8;

    ClientList();

    void showClients(const ClientsStatus& clients);

  signals:
    void disconnectRequested(std::int64_t id);

  private:
    struct Row {
        CaptionLabel* address;
        CaptionLabel* details;
        QPushButton* button;
        std::int64_t id = 0;
        /// Of the one whose button went down: by the time it comes up, the row may be another's.
        std::int64_t pressedId = 0;
    };

    void addRow();
    void showRow(Row& row, const ClientStatus& client);
    void showMore(std::size_t hidden);

    // Owned by this widget, as Qt does it
    QGridLayout* const grid_;
    CaptionLabel* const more_;
    /// All of them from the start: the tab key goes through the buttons of a window as they were made.
    std::vector<Row> rows_;
};

/// "2026-11-22T03:15:00Z" as the clock and the calendar of this computer have it; the day only where it is
/// not today.
QString sinceText(const std::string& utc);

} // namespace tarnly
