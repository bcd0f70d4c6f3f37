#pragma once

#include "look/Look.h"

#include <QWidget>

#include <vector>

namespace quillnest
{

class Segment;

/// Pages or views of which one is chosen, side by side. One stop of the Tab key; the arrow keys go from segment to
/// segment and choose.
class SegmentedControl : public QWidget
{
    Q_OBJECT

public:
    struct Page {
        QString title;
        /// Above the title; empty for none.
        QString symbol = {};
    };

    /// `name` is what screen readers call it. The first page is chosen.
    SegmentedControl(const Look &look, const QString &name, const std::vector<Page> &pages, QWidget *parent = nullptr);

    int count() const { return static_cast<int>(m_segments.size()); }
    int current() const { return m_current; }
    /// Chooses a page that is there. Says nothing to those who listen.
    void setCurrent(int index);
    /// One that is disabled is passed over.
    void setPageEnabled(int index, bool on);
    Segment &segment(int index) const;

Q_SIGNALS:
    /// The user has chosen another page.
    void chosen(int index);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void choose(int index);
    /// From a segment on, `steps` of -1 or 1, or to the first or last.
    void move(int from, int key);

    const Look &m_look;
    std::vector<Segment *> m_segments;
    int m_current = 0;
};

} // namespace quillnest
