#include "app/quobrix_app.h"
#include "platform/process.h"

int main(int argc, char** argv) {
    quobrix::ignoreWriteSignals();
    quobrix::TQuobrixApp app(argc, argv);
    return app.start() ? quobrix::TQuobrixApp::exec() : 0;
}
