#include "lists/step_list_model.h"

#include <cstring>
#include <memory>
#include <type_traits>

namespace {

// Mixes as FNV-1a does, a word at a time.
void mix(quint64& sum, quint64 word) {
    sum = (sum ^ word) * 0x100000001B3ULL;
    sum ^= sum >> 29;
}

template <typename Field>
void mixField(quint64& sum, const Field& field) {
    if constexpr (std::is_same_v<Field, std::string>) {
        mix(sum, std::hash<std::string>()(field));
    } else {
        quint64 word = 0;
        std::memcpy(&word, &field, sizeof field);
        mix(sum, word);
    }
}

} // namespace

template <typename Point>
int StepListModel<Point>::rowCount() const {
    return m_points != nullptr ? static_cast<int>(m_points->size()) : 0;
}

template <typename Point>
Point* StepListModel<Point>::pointAt(int row) const {
    return row >= 0 && row < rowCount() ? (*m_points)[static_cast<std::size_t>(row)] : nullptr;
}

template <typename Point>
void StepListModel<Point>::renumber() {
    const int count = rowCount();
    for (int row = 0; row < count; ++row) {
        Point& point = *pointAt(row);
        point.stepNumber = static_cast<std::uint32_t>(row + 1);
        point.last = row + 1 == count;
    }
}

template <typename Point>
void StepListModel<Point>::destroyPoints() {
    if (m_points == nullptr)
        return;
    for (Point* point : *m_points)
        delete point;
    m_points->clear();
}

template <typename Point>
bool StepListModel<Point>::clearAndCreateDefault(QString& error) {
    destroyPoints();
    return addDefault(error);
}

template <typename Point>
ListColumn StepListModel<Point>::column(int index) const {
    return index >= 0 && index < columnCount() ? m_columns[static_cast<std::size_t>(index)] : ListColumn();
}

template <typename Point>
bool StepListModel<Point>::addDefault(QString& error) {
    if (m_points == nullptr)
        return this->fail(error, m_messages.noStorage);
    auto point = std::make_unique<Point>(defaultPoint());
    m_points->push_back(point.get());
    static_cast<void>(point.release()); // the list holds it now
    renumber();
    return true;
}

template <typename Point>
bool StepListModel<Point>::deleteRow(int row, QString& error) {
    const Point* const point = pointAt(row);
    if (point == nullptr)
        return this->fail(error, m_messages.noRow);
    if (rowCount() == 1)
        return this->fail(error, m_messages.onlyStep);
    delete point;
    m_points->erase(m_points->begin() + row);
    renumber();
    return true;
}

template <typename Point>
bool StepListModel<Point>::insertBehind(int row, const Point& point, QString& error) {
    if (pointAt(row) == nullptr)
        return this->fail(error, m_messages.noRow);
    auto step = std::make_unique<Point>(point);
    m_points->insert(m_points->begin() + row + 1, step.get());
    step.release(); // the list's from here on
    renumber();
    return true;
}

template <typename Point>
bool StepListModel<Point>::insertDefault(int row, QString& error) {
    return insertBehind(row, defaultPoint(), error);
}

template <typename Point>
bool StepListModel<Point>::repeatRow(int row, QString& error) {
    const Point* const point = pointAt(row);
    return insertBehind(row, point != nullptr ? *point : Point(), error);
}

template <typename Point>
bool StepListModel<Point>::moveRow(int row, int by, QString& error) {
    Point* const point = pointAt(row);
    Point* const other = pointAt(row + by);
    if (point == nullptr || other == nullptr)
        return this->fail(error, m_messages.noRow);
    std::swap(*point, *other);
    renumber();
    return true;
}

template <typename Point>
QJsonArray StepListModel<Point>::toJson() const {
    StepJsonWriter<Point> writer(jsonMembers());
    QJsonArray steps;
    for (int row = 0; row < rowCount(); ++row)
        steps.append(writer.write(*pointAt(row)));
    return steps;
}

template <typename Point>
bool StepListModel<Point>::fromJson(const QJsonArray& steps, QString& error) {
    if (m_points == nullptr)
        return this->fail(error, m_messages.noStorage);
    if (steps.isEmpty())
        return this->fail(error, m_messages.fileEmpty);
    const Point blank = blankPoint();
    StepJsonReader<Point> reader(jsonMembers());
    std::vector<std::unique_ptr<Point>> read;
    read.reserve(static_cast<std::size_t>(steps.size()));
    for (const QJsonValue step : steps) {
        if (!step.isObject())
            continue;
        read.push_back(std::make_unique<Point>(blank));
        reader.read(step.toObject(), *read.back());
        if (!acceptRead(*read.back(), error))
            return false;
    }
    if (read.empty())
        return this->fail(error, m_messages.fileWithoutSteps);
    m_points->reserve(read.size());
    destroyPoints();
    for (std::unique_ptr<Point>& point : read)
        m_points->push_back(point.release());
    renumber();
    return true;
}

template <typename Point>
quint64 StepListModel<Point>::fingerprint() const {
    quint64 sum = static_cast<quint64>(rowCount());
    const JsonMembers<Point>& members = jsonMembers();
    for (int row = 0; row < rowCount(); ++row) {
        const Point& point = *pointAt(row);
        for (const JsonMember<Point>& member : members) {
            if (member.isRead)
                std::visit([&](auto field) { mixField(sum, point.*field); }, member.field);
        }
    }
    return sum;
}

template class StepListModel<list_point>;
template class StepListModel<pattern_point>;
