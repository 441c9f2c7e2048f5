#pragma once

#include "base/result.h"
#include "document/disk_work.h"
#include "paper/painter.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>

namespace quobrix {

/// What is printed of a report, and on what.
struct PrintOrder {
    QString printer{};
    int copies = 1;
    bool bothSides = false;
    std::size_t first = 0, last = SIZE_MAX; ///< pages, from 0, as far as there are; the last is not among them
};

/// The printers that this computer knows. Asking the system may take as long as a printer in the network is silent, so
/// nothing here is called on the user-interface thread. Calls wait for each other.
class Printers {
public:
    virtual ~Printers() = default;

    struct Known {
        QStringList names{};
        QString usual{}; ///< empty: none
    };
    virtual Known find() = 0;
    /// Paints PAGES on paper, and tells how many are done. Io if the printer fails.
    virtual Result<void> print(const PrintOrder& order, const PageSource& pages, DiskProgress& progress) = 0;
};

std::shared_ptr<Printers> systemPrinters();

} // namespace quobrix
