#pragma once

#include <QLayout>
#include <QString>
#include <QWidget>
#include <functional>
#include <string>
#include <vector>

#include "TarnlyApp/CompanionOptions.hpp"
#include "TarnlyApp/Desktop/SettingField.hpp"
#include "TarnlyApp/Settings.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"

class QVBoxLayout;

namespace tarnly {

class CaptionLabel;

/// The settings window. Every edit that can be used goes to the store: there is nothing to confirm. Where the
/// command line says something else for this run, the line of help tells.
class SettingsWindow : public QWidget {
    Q_OBJECT

  public:
    explicit SettingsWindow(SettingsStore& store, const CompanionOptions& options = {});

    /// Keeps what was typed last.
    ~SettingsWindow() override;

    /// Keeps it now.
    void commit();

  protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    using Text = std::optional<std::string> AppSettings::*;
    using Number = std::optional<std::int64_t> AppSettings::*;

    QFormLayout* addGroup(const QString& title);
    void addPairing();
    void addNetwork(const CompanionOptions& options);
    void addSimulator(const CompanionOptions& options);
    void addStart();
    void addText(QFormLayout& form, SettingField::Description description, Text setting,
                 SettingField::Fault fault);
    void addNumber(QFormLayout& form, SettingField::Description description, Number setting,
                   std::function<Phrase(std::int64_t)> fault);
    void addOrigins(QFormLayout& form, const CompanionOptions& options);
    void changePassword(const QString& password);
    void showWhetherPasswordIsSet();

    SettingsStore& store_;
    // Owned by this widget, as Qt does it
    CaptionLabel* const caption_;
    QVBoxLayout* groups_ = nullptr;
    std::vector<SettingField*> fields_;
};

} // namespace tarnly
