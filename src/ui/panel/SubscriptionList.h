#pragma once

#include "timeline/TimelineSnapshot.h"
#include "ui/panel/SubscriptionRow.h"

#include <QAbstractScrollArea>

#include <functional>
#include <optional>
#include <vector>

namespace orbitledge::ui {

class ThemedLabel;

/// The sections of the timeline. However many subscriptions there are, there is a row only for those that are
/// seen, and for the ones that have the keyboard or are being changed. Tab comes to one row and its buttons;
/// the arrow keys go from row to row.
class SubscriptionList : public QAbstractScrollArea {
    Q_OBJECT

public:
    using RowMaker = std::function<RowContent(const TimelineEntry &)>;

    SubscriptionList(RowActions actions, LogoImages *images, QWidget *parent = nullptr);

    /// Rows of subscriptions that stay keep what they are doing, and the list stays where it is, unless the
    /// row that has the keyboard goes, or is seen to have it and moves. `makeRow` is called for rows as they
    /// come into view.
    void setSections(QList<TimelineSection> sections, RowMaker makeRow);

    qsizetype rowCount() const { return m_rowCount; }
    /// Those that are there, in their order.
    QList<SubscriptionRow *> rows() const;
    QList<ThemedLabel *> headers() const { return m_headers; }

    QSize sizeHint() const override;
    /// A title and some rows.
    QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    bool viewportEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    struct Realized {
        SubscriptionRow *row = nullptr;
        qsizetype position = -1;
    };
    struct Place {
        qsizetype section = 0;
        qsizetype index = 0;
    };
    struct Followed {
        QUuid id;
        const SubscriptionRow *row = nullptr;
        int top = 0;
    };

    const TimelineEntry &entryAt(qsizetype position) const;
    Place placeOf(qsizetype position) const;
    /// In the list, not in the view.
    int topOf(qsizetype position) const;
    qsizetype positionAt(int y) const;
    int headerHeight() const;
    int rowHeight() const;
    int contentHeight() const;
    std::optional<Followed> findFollowed() const;
    void follow(const Followed &followed);
    void relocate();
    void keepFocus();
    void realize();
    void realizeRange(qsizetype first, qsizetype last);
    void placeHeaders();
    SubscriptionRow *makeRow();
    SubscriptionRow *rowAt(qsizetype position);
    void setCurrent(qsizetype position);
    void moveCurrent(int key);
    void reveal(qsizetype position);
    static bool isHeld(const SubscriptionRow &row);

    RowActions m_actions;
    LogoImages *m_images;
    QList<TimelineSection> m_sections;
    RowMaker m_makeRow;
    qsizetype m_rowCount = 0;
    /// Where each section's rows begin, by position.
    std::vector<qsizetype> m_firstRows;
    QList<ThemedLabel *> m_headers;
    std::vector<Realized> m_realized;
    std::vector<SubscriptionRow *> m_spare;
    qsizetype m_current = 0;
    QUuid m_currentId;
    bool m_isPassedOver = false;
};

} // namespace orbitledge::ui
