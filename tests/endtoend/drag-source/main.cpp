// drag-source FILE...: a window of another program, in the screen's upper left corner, from which files can be dragged.
// Says in a line what became of each drag.

#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

#include <cstdio>

namespace
{

class Source : public QWidget
{
public:
    Source() : QWidget(nullptr, Qt::FramelessWindowHint) { }

protected:
    void mousePressEvent(QMouseEvent *) override
    {
        auto *files = new QMimeData;
        QList<QUrl> urls;
        for (const auto &path : QApplication::arguments().mid(1))
            urls += QUrl::fromLocalFile(path);
        files->setUrls(urls);
        auto *drag = new QDrag(this);
        drag->setMimeData(files);
        std::puts("dragging");
        std::fflush(stdout);
        const auto action = drag->exec(Qt::CopyAction);
        std::puts(action == Qt::CopyAction ? "copied" : "refused");
        std::fflush(stdout);
    }
};

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    Source source;
    source.setGeometry(40, 400, 200, 200);
    source.show();
    return QApplication::exec();
}
