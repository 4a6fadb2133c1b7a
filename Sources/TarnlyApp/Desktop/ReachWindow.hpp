#pragma once

#include <QString>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <optional>

#include "TarnlyApp/Desktop/RuntimeModel.hpp"
#include "TarnlyCore/Protocol/ReachTest.hpp"

class QComboBox;
class QPushButton;

namespace tarnly {

class CaptionLabel;
class HeadlineLabel;
class QrCodeWidget;

/// Finds out whether a device gets to this companion: it shows an address, as text and as a QR code, and
/// tells whether anybody came of it. What came last counts, so that a password may be corrected meanwhile.
///
/// The test begins anew with each showing, and ends with the window or when the time is over.
class ReachWindow : public QWidget {
    Q_OBJECT

  public:
    static constexpr std::chrono::minutes usualPatience{2};

    /// `patience` is how long it waits for a device.
    explicit ReachWindow(RuntimeModel& runtime, std::chrono::milliseconds patience = usualPatience);

  protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void begin();
    void beginIfItCan();
    void end();
    void waitFor(const CompanionStatus& before);
    void look();
    void giveUp();
    void showPages();
    void showSelected();
    void tell(const QString& headline, const ReachFinding& finding);

    RuntimeModel& runtime_;
    QTimer patience_;
    /// Absent until it is known who had been there before, and once the time is over.
    std::optional<ReachTest> test_;
    /// The number of the present test: what was asked for another one is of no use.
    int round_ = 0;
    // Owned by this widget, as Qt does it
    CaptionLabel* const instruction_;
    QComboBox* const pages_;
    QrCodeWidget* const code_;
    HeadlineLabel* const headline_;
    CaptionLabel* const finding_;
    CaptionLabel* const cure_;
    QPushButton* const again_;
};

} // namespace tarnly
