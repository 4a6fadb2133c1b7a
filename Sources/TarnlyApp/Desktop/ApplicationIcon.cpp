#include "TarnlyApp/Desktop/ApplicationIcon.hpp"

#include <QDir>

namespace tarnly {

QIcon applicationIcon() {
    using namespace Qt::StringLiterals;
    QIcon icon;
    const QDir sizes(u":/icons"_s);
    for (const auto& name : sizes.entryList()) {
        icon.addFile(sizes.filePath(name));
    }
    return icon;
}

} // namespace tarnly
