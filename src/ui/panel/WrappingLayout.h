#pragma once

#include <QLayout>

#include <memory>
#include <vector>

namespace orbitledge::ui {

/// Beside each other, and in the next line where there is not room for one more.
class WrappingLayout : public QLayout {
    Q_OBJECT

public:
    explicit WrappingLayout(QWidget *parent);
    ~WrappingLayout() override;

    void addItem(QLayoutItem *item) override;
    int count() const override { return static_cast<int>(m_items.size()); }
    QLayoutItem *itemAt(int index) const override;
    QLayoutItem *takeAt(int index) override;

    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSize() const override;
    void setGeometry(const QRect &rect) override;

private:
    enum class Purpose { Measure, Place };

    /// How high it is.
    int arrange(const QRect &rect, Purpose purpose) const;

    std::vector<std::unique_ptr<QLayoutItem>> m_items;
};

} // namespace orbitledge::ui
