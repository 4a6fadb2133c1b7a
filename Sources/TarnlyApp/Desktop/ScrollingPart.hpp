#pragma once

#include <QScrollArea>

namespace tarnly {

/// The part of a window that is shown as a whole where the screen has room for it, and scrolled where it has
/// not, so that what stands around it, as buttons do, is always in sight. Takes the keys only while there is
/// something to scroll; what gets the focus in it is scrolled into sight.
class ScrollingPart : public QScrollArea {
    Q_OBJECT

  public:
    /// Takes the content, which has a layout. `name` is for screen readers.
    ScrollingPart(QWidget* content, const QString& name);
    ~ScrollingPart() override;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void showFocus(const QWidget* before, QWidget* now);
};

} // namespace tarnly
