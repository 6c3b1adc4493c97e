#include "common/instrument/handlerscpi_check.h"

#include <cmath>

// The device values: one algorithm over their table, and the texts that are only read.

EventHandler::EventHandler(const InstrumentSettings& settings, QObject* parent) : InstrumentLink(settings, parent) {}

int EventHandler::setDeviceValue(DeviceValueId id, double value) {
    if (!std::isfinite(value))
        return -1;
    const DeviceValue& item = deviceValue(id);
    const std::string text = wireText(item, value);
    return sendChecked(item.header, text, [&] {
        deviceField(id);
        return isTaken(item, snapshot(), value, text);
    });
}

double EventHandler::cachedValue(DeviceValueId id) const {
    const DeviceValue& item = deviceValue(id);
    return fieldInHandlerUnits(item, snapshot(), item.valueOffset);
}

ValueLimits EventHandler::cachedLimits(DeviceValueId id) const {
    const DeviceValue& item = deviceValue(id);
    return {fieldInHandlerUnits(item, snapshot(), item.maximumOffset),
            fieldInHandlerUnits(item, snapshot(), item.minimumOffset)};
}

double EventHandler::roundedToWire(DeviceValueId id, double value) const {
    if (!std::isfinite(value))
        return value;
    const DeviceValue& item = deviceValue(id);
    const double onWire = wireNumber(wireText(item, value));
    return item.kind == DeviceValue::Kind::Time ? secondsToNanoseconds(onWire) : onWire;
}

double EventHandler::deviceField(DeviceValueId id) {
    const DeviceValue& item = deviceValue(id);
    fetchBytes(reinterpret_cast<char*>(&cachedRecord()) + item.valueOffset, item.fieldSize());
    return cachedValue(id);
}

std::string EventHandler::get_sys_opt() {
    return recordText(fetch(cachedRecord().options));
}
std::string EventHandler::get_sys_ip() {
    return recordText(fetch(cachedRecord().ipAddress));
}
std::string EventHandler::get_sys_mask() {
    return recordText(fetch(cachedRecord().networkMask));
}
std::string EventHandler::getIP() {
    return recordText(peekRecord().ipAddress);
}
std::string EventHandler::getMask() {
    return recordText(peekRecord().networkMask);
}
std::string EventHandler::getGateway() {
    return recordText(peekRecord().gateway);
}
std::string EventHandler::getPort() {
    return recordText(peekRecord().scpiPort);
}
unsigned EventHandler::getDhcpMode() {
    return peekRecord().dhcp;
}
std::string EventHandler::getSysModel() const {
    return recordText(snapshot().model);
}
std::string EventHandler::get_sys_temp() {
    return fixedText(fetch(cachedRecord().temperature), 6);
}

std::string EventHandler::get_sys_bat() {
    fetch(cachedRecord().batteryCompanion);
    return std::to_string(fetch(cachedRecord().batteryCharge));
}

std::string EventHandler::get_sys_identification() {
    return recordText(fetch(cachedRecord().model)) + ' ' + recordText(fetch(cachedRecord().serial)) + ' ' +
           recordText(fetch(cachedRecord().firmwareVersion));
}

std::string EventHandler::getModelInternalInf() {
    std::string reply;
    if (veldaScpiTrans(Scpi::DeviceArchitectureQuery, std::string(), reply) != 0 || reply.empty())
        return "NMX4000A,20000,1,usb,2001,168c,benchtop";
    return reply;
}
