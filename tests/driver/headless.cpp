// quillnest-headless DIR: the main road without a screen. Exit status 0 only if every step really happened.

#include "driver/Road.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonDocument>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const auto folder = QCoreApplication::arguments().value(1);
    if (folder.isEmpty()) {
        std::fputs("usage: quillnest-headless DIR\n", stderr);
        return 2;
    }
    try {
        const auto report = quillnest::driver::goTheRoad(QDir(folder).absolutePath());
        std::fputs(QJsonDocument(report).toJson().constData(), stdout);
        return 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
