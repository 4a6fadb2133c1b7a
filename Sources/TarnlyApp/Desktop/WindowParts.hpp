#pragma once

#include <QLabel>
#include <QString>
#include <QWidget>

class QLayout;

namespace tarnly {

/// Pixels around a window's content.
inline constexpr int windowPadding = 20;

/// A text that begins where the language of the windows begins its lines, even if its own letters run the
/// other way, as those of a name do.
class LeadingLabel : public QLabel {
    Q_OBJECT

  public:
    explicit LeadingLabel(const QString& text);

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void adoptDirection();
};

/// The title of a panel or of a section.
class HeadlineLabel : public LeadingLabel {
    Q_OBJECT

  public:
    explicit HeadlineLabel(const QString& text);
};

/// A smaller text in the secondary colour, which follows the desktop's colours. Breaks its lines, also within
/// a word that is too long for one; is plain text whatever is in it.
class CaptionLabel : public LeadingLabel {
    Q_OBJECT

  public:
    explicit CaptionLabel(const QString& text = {});

    /// What a screen reader reads is `text`, too.
    void showText(const QString& text);

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void adoptColour();
};

/// An address as lists show it: its last slash comes last also where lines run from right to left.
QString shownAddress(const QString& address);

/// Between the colours of text and window: readable, and less prominent than text.
QColor secondaryColour(const QPalette& palette);

/// What a layout's content takes, whose lines are broken at this width.
int contentHeight(const QLayout& layout, int width);

/// Gives a window this width and the height that its content takes then, or what the screen has; of a window
/// that is larger than that a `ScrollingPart` gives way, and gets room for its scroll bar. Needed anew when
/// the content, or the style, has changed.
void fitContent(QWidget& window, int width);

/// Shows a window before all others, also when it was minimized.
void bringUp(QWidget& window);

} // namespace tarnly
