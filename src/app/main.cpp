#include "app/quobrix_app.h"

int main(int argc, char** argv) {
    quobrix::TQuobrixApp app(argc, argv);
    return app.start() ? quobrix::TQuobrixApp::exec() : 0;
}
