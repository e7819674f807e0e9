#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <stdexcept>

#undef signals
#include <arv.h>

namespace tavix::test {

// Aravis's fake camera with the features real GenICam cameras have and the
// plain fake lacks: ExposureTime with ExposureAuto, BalanceWhiteAuto,
// BalanceRatio behind BalanceRatioSelector, Gamma with GammaEnable,
// ReverseX/Y, BlackLevel with BlackLevelAuto (GainAuto is the fake's own).
// The description is the fake's own with these added; while an instance
// lives, every fake camera Aravis opens reads it. Like a real camera's, the
// automatic modes only hold their setting: a test plays the camera (switching
// BalanceWhiteAuto from Once back to Off when it has balanced).
//
// The exposure's range comes from TestExposureTimeMin and TestExposureTimeMax
// (microseconds), which a test sets to give the camera another range.
class RicherFakeCamera {
public:
    explicit RicherFakeCamera(const QString& path) : path_(path)
    {
        QFile file(path_);
        if (!file.open(QIODevice::WriteOnly) || file.write(description()) < 0)
            throw std::runtime_error("cannot write the fake camera's description");
        file.close();
        arv_set_fake_camera_genicam_filename(QFile::encodeName(path_).constData());
    }
    ~RicherFakeCamera() { arv_set_fake_camera_genicam_filename(nullptr); }
    RicherFakeCamera(const RicherFakeCamera&) = delete;
    RicherFakeCamera& operator=(const RicherFakeCamera&) = delete;

    static QByteArray description()
    {
        GBytes* bytes =
            g_resources_lookup_data("/org/aravis/arv-fake-camera.xml", G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr);
        if (!bytes)
            throw std::runtime_error("Aravis has no fake camera description");
        gsize size = 0;
        const auto* data = static_cast<const char*>(g_bytes_get_data(bytes, &size));
        QByteArray xml(data, static_cast<qsizetype>(size));
        g_bytes_unref(bytes);
        const QByteArray end("</RegisterDescription>");
        const int at = xml.lastIndexOf(end);
        if (at < 0)
            throw std::runtime_error("the fake camera's description has no end");
        return xml.insert(at, kFeatures);
    }

private:
    // Values without a register live in the description itself, one copy per opened camera.
    static constexpr const char* kFeatures = R"(
	<Float Name="ExposureTime" NameSpace="Standard">
		<Value>20000.0</Value>
		<pMin>TestExposureTimeMin</pMin>
		<pMax>TestExposureTimeMax</pMax>
		<Unit>us</Unit>
	</Float>
	<Float Name="TestExposureTimeMin" NameSpace="Custom"><Value>10.0</Value></Float>
	<Float Name="TestExposureTimeMax" NameSpace="Custom"><Value>100000.0</Value></Float>
	<Enumeration Name="ExposureAuto" NameSpace="Standard">
		<EnumEntry Name="Off" NameSpace="Standard"><Value>0</Value></EnumEntry>
		<EnumEntry Name="Once" NameSpace="Standard"><Value>1</Value></EnumEntry>
		<EnumEntry Name="Continuous" NameSpace="Standard"><Value>2</Value></EnumEntry>
		<pValue>ExposureAutoValue</pValue>
	</Enumeration>
	<Integer Name="ExposureAutoValue" NameSpace="Custom"><Value>0</Value></Integer>
	<Enumeration Name="BalanceWhiteAuto" NameSpace="Standard">
		<EnumEntry Name="Off" NameSpace="Standard"><Value>0</Value></EnumEntry>
		<EnumEntry Name="Once" NameSpace="Standard"><Value>1</Value></EnumEntry>
		<EnumEntry Name="Continuous" NameSpace="Standard"><Value>2</Value></EnumEntry>
		<pValue>BalanceWhiteAutoValue</pValue>
	</Enumeration>
	<Integer Name="BalanceWhiteAutoValue" NameSpace="Custom"><Value>0</Value></Integer>
	<Enumeration Name="BalanceRatioSelector" NameSpace="Standard">
		<EnumEntry Name="Red" NameSpace="Standard"><Value>0</Value></EnumEntry>
		<EnumEntry Name="Green" NameSpace="Standard"><Value>1</Value></EnumEntry>
		<EnumEntry Name="Blue" NameSpace="Standard"><Value>2</Value></EnumEntry>
		<pValue>BalanceRatioSelectorValue</pValue>
	</Enumeration>
	<Integer Name="BalanceRatioSelectorValue" NameSpace="Custom"><Value>0</Value></Integer>
	<Float Name="BalanceRatio" NameSpace="Standard">
		<pValue>BalanceRatioConverter</pValue>
		<Min>0.0</Min>
		<Max>4.0</Max>
	</Float>
	<Converter Name="BalanceRatioConverter" NameSpace="Custom">
		<FormulaTo>FROM * 1000</FormulaTo>
		<FormulaFrom>TO / 1000</FormulaFrom>
		<pValue>BalanceRatioRegister</pValue>
	</Converter>
	<IntReg Name="BalanceRatioRegister" NameSpace="Custom">
		<Address>0x1000</Address>
		<pIndex Offset="4">BalanceRatioSelector</pIndex>
		<Length>4</Length>
		<AccessMode>RW</AccessMode>
		<pPort>Device</pPort>
		<Sign>Unsigned</Sign>
		<Endianess>BigEndian</Endianess>
	</IntReg>
	<Float Name="Gamma" NameSpace="Standard">
		<Value>1.0</Value>
		<Min>0.0</Min>
		<Max>4.0</Max>
	</Float>
	<Boolean Name="GammaEnable" NameSpace="Standard"><pValue>GammaEnableValue</pValue></Boolean>
	<Integer Name="GammaEnableValue" NameSpace="Custom"><Value>1</Value></Integer>
	<Boolean Name="ReverseX" NameSpace="Standard"><pValue>ReverseXValue</pValue></Boolean>
	<Integer Name="ReverseXValue" NameSpace="Custom"><Value>0</Value></Integer>
	<Boolean Name="ReverseY" NameSpace="Standard"><pValue>ReverseYValue</pValue></Boolean>
	<Integer Name="ReverseYValue" NameSpace="Custom"><Value>0</Value></Integer>
	<Integer Name="BlackLevel" NameSpace="Standard">
		<Value>4</Value>
		<Min>0</Min>
		<Max>64</Max>
	</Integer>
	<Enumeration Name="BlackLevelAuto" NameSpace="Standard">
		<EnumEntry Name="Off" NameSpace="Standard"><Value>0</Value></EnumEntry>
		<EnumEntry Name="Continuous" NameSpace="Standard"><Value>2</Value></EnumEntry>
		<pValue>BlackLevelAutoValue</pValue>
	</Enumeration>
	<Integer Name="BlackLevelAutoValue" NameSpace="Custom"><Value>0</Value></Integer>
)";

    QString path_;
};

}  // namespace tavix::test
