#include "TarnlyApp/Desktop/QrCode.hpp"

#include <qrencode.h>

#include <QPainter>
#include <algorithm>
#include <limits>
#include <memory>

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;

using Encoded = std::unique_ptr<QRcode, decltype(&QRcode_free)>;

Encoded encode(const std::string& text) {
    if (text.empty() || text.size() > std::numeric_limits<int>::max()) return {nullptr, &QRcode_free};
    constexpr int smallestThatFits = 0;
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    return {QRcode_encodeData(static_cast<int>(text.size()), bytes, smallestThatFits, QR_ECLEVEL_M),
            &QRcode_free};
}

/// In modules, on each side: ISO/IEC 18004 asks for four.
constexpr int quietZone = 4;
constexpr int sideLength = 200;

void paintModules(QPainter& painter, const QrCode& code) {
    for (int y = 0; y < code.size(); ++y) {
        for (int x = 0; x < code.size(); ++x) {
            if (code.isDark(x, y)) painter.fillRect(x, y, 1, 1, Qt::black);
        }
    }
}

} // namespace

std::optional<QrCode> QrCode::of(const std::string& text) {
    const auto code = encode(text);
    if (!code) return std::nullopt;
    const auto count = static_cast<std::size_t>(code->width) * static_cast<std::size_t>(code->width);
    std::vector<bool> modules(count);
    // The lowest bit of a module is its colour, the others are the encoder's own.
    for (std::size_t i = 0; i < count; ++i)
        modules[i] = (code->data[i] & 1U) != 0;
    return QrCode(code->width, std::move(modules));
}

bool QrCode::isDark(int x, int y) const {
    if (x < 0 || y < 0 || x >= size_ || y >= size_) return false;
    return modules_[static_cast<std::size_t>(y) * static_cast<std::size_t>(size_) +
                    static_cast<std::size_t>(x)];
}

QrCodeWidget::QrCodeWidget() { setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed); }

void QrCodeWidget::showCode(const std::string& text) {
    code_ = QrCode::of(text);
    setAccessibleName(code_ ? u"QR code of "_s + QString::fromStdString(text) : QString());
    update();
}

QSize QrCodeWidget::sizeHint() const { return {sideLength, sideLength}; }

// A module is a whole number of the screen's dots wide: blurred edges make a code hard to read.
void QrCodeWidget::paintEvent(QPaintEvent* /*event*/) {
    if (!code_) return;
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    const double dots = devicePixelRatioF();
    const int available = static_cast<int>(std::min(width(), height()) * dots);
    const int module = std::max(1, available / (code_->size() + 2 * quietZone));
    const int margin = (available - module * code_->size()) / 2;
    painter.scale(1 / dots, 1 / dots);
    painter.translate(margin, margin);
    painter.scale(module, module);
    paintModules(painter, *code_);
}

} // namespace tarnly
