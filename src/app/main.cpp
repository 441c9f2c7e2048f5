#include "app/quobrix_app.h"
#include "platform/process.h"
#include "platform/translations.h"

int main(int argc, char** argv) {
    quobrix::ignoreWriteSignals();
    quobrix::useTranslation();
    quobrix::TQuobrixApp app(argc, argv);
    return app.start() ? quobrix::TQuobrixApp::exec() : 0;
}
