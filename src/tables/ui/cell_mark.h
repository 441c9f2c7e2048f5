#pragma once

#include "tables/check.h"

#include <QPixmap>

class QPainter;
class QRect;

namespace quobrix {

/// Marks a cell: a disc for an error, a triangle for a warning, both with an exclamation mark, so that neither their
/// colour nor the background matters.
void paintMark(QPainter& painter, const QRect& area, Severity severity);
/// The same as a picture of SIZE pixels of the desktop.
QPixmap markPixmap(Severity severity, int size, qreal pixelRatio);

} // namespace quobrix
