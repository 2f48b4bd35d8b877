#pragma once

#include <QDateEdit>

namespace orbitledge::ui {

/// A day to choose, in a calendar that drops down and belongs to the family. The toolkit's own has weekends
/// in red, and arrows that are nobody's.
class DateField : public QDateEdit {
    Q_OBJECT

public:
    explicit DateField(QDate date, QWidget *parent = nullptr);

protected:
    void changeEvent(QEvent *event) override;

private:
    void dressCalendar();
    /// Days are written, and weeks begin, as they do where its locale is from.
    void followLocale();
};

} // namespace orbitledge::ui
