#pragma once

#include "app/main_frame.h"
#include "support/view_fixture.h"

#include <QApplication>
#include <QTimer>

namespace quobrix::test {

/// The main frame with a document without trips.
class FrameTest : public ViewTest {
protected:
    TQuobrixFrame frame_{context_};
};

/// When the program waits for the next event, LOOK(Dialog&) sees the dialog of that type that is then open, if any.
template <class Dialog = QWidget, class Look>
void inNextDialog(Look look) {
    QTimer::singleShot(0, qApp, [look] {
        if (auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget()))
            look(*dialog);
    });
}

} // namespace quobrix::test
