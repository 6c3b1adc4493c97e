#include "lists/step_json.h"

#include "common/wire/step_points.h"

#include <QCborMap>
#include <cmath>

namespace {

constexpr std::size_t MostModels = 256; // a file can bring in any text

QJsonValue jsonValue(double number) {
    return number;
}
QJsonValue jsonValue(const std::string& text) {
    return QString::fromStdString(text);
}
QJsonValue jsonValue(std::uint32_t count) {
    return static_cast<qint64>(count);
}
QJsonValue jsonValue(bool flag) {
    return flag ? 1 : 0;
}

std::uint32_t readCount(const QCborValue& value, std::uint32_t otherwise) {
    const double number = value.toDouble(otherwise);
    if (!(std::abs(number) <= INT32_MAX) || number != std::floor(number))
        return otherwise;
    return number > 0 ? static_cast<std::uint32_t>(number) : 0;
}

} // namespace

template <typename Point>
QJsonObject StepJsonWriter<Point>::write(const Point& point) {
    m_texts.clear();
    for (const JsonMember<Point>& member : m_members) {
        if (const auto text = std::get_if<std::string Point::*>(&member.field))
            m_texts.append(point.**text).push_back('\0');
    }
    auto model = m_models.find(m_texts);
    const bool isNew = model == m_models.end();
    if (isNew) {
        if (m_models.size() == MostModels)
            m_models.clear();
        model = m_models.emplace(m_texts, QJsonObject()).first;
    }
    QJsonObject object = model->second;
    for (const JsonMember<Point>& member : m_members) {
        if (isNew || !std::holds_alternative<std::string Point::*>(member.field))
            std::visit([&](auto field) { object.insert(member.key, jsonValue(point.*field)); }, member.field);
    }
    if (isNew)
        model->second = object;
    return object;
}

template <typename Point>
StepJsonReader<Point>::StepJsonReader(const JsonMembers<Point>& members) : m_members(members) {
    for (const JsonMember<Point>& member : members)
        m_state.push_back({QCborValue(QString(member.key)), QCborValue(), std::string()});
}

template <typename Point>
void StepJsonReader<Point>::read(const QJsonObject& object, Point& point) {
    // The same data, seen as what QJsonObject is inside: that looks at keys and numbers without allocating. An object
    // that was written here has its members where the table has them; others are looked up.
    const QCborMap map = QCborMap::fromJsonObject(object);
    auto expected = map.constBegin();
    for (std::size_t i = 0; i < m_members.size(); ++i) {
        const bool isThere = expected != map.constEnd() && expected.key() == m_state[i].key;
        if (m_members[i].isRead)
            store(isThere ? expected.value() : map.value(m_members[i].key), i, point);
        if (isThere)
            ++expected;
    }
}

template <typename Point>
void StepJsonReader<Point>::store(const QCborValue& value, std::size_t index, Point& point) {
    if (value.isUndefined())
        return;
    const auto& field = m_members[index].field;
    if (const auto number = std::get_if<double Point::*>(&field)) {
        point.** number = value.toDouble();
    } else if (const auto text = std::get_if<std::string Point::*>(&field)) {
        Member& last = m_state[index];
        if (value != last.text) {
            last.text = value;
            last.bytes = value.toString().toStdString();
        }
        point.** text = last.bytes;
    } else if (const auto count = std::get_if<std::uint32_t Point::*>(&field)) {
        point.** count = readCount(value, point.**count);
    } else if (const auto flag = std::get_if<bool Point::*>(&field)) {
        point.** flag = value.toInteger() != 0;
    }
}

template class StepJsonWriter<list_point>;
template class StepJsonWriter<pattern_point>;
template class StepJsonReader<list_point>;
template class StepJsonReader<pattern_point>;
