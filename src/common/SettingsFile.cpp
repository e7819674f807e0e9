#include "common/SettingsFile.h"

#include "common/CameraDrivers.h"
#include "common/IniFile.h"
#include "common/NumberText.h"
#include "common/RunError.h"

#include <QStringList>
#include <limits>
#include <type_traits>
#include <variant>
#include <vector>

namespace tavix {

namespace {

// Where a key's value goes: a function giving the member of Settings, whose
// type decides the conversion.
template <class T>
using Ref = T& (*)(Settings&);
using Target = std::variant<Ref<QString>, Ref<qint16>, Ref<qint32>, Ref<quint8>, Ref<double>>;
#define TAVIX_FIELD(member) +[](Settings& s) -> decltype((s.member)) { return s.member; }

enum class IfMissing {
    Fail,        // a mandatory key: missing or empty ends the load
    UseDefault,  // the key's default text is used instead
    Keep,        // the variable keeps the value it had
};

struct Check {
    qint64 min = std::numeric_limits<qint64>::min();
    qint64 max = std::numeric_limits<qint64>::max();
    QStringList choices;  // text keys: the only values allowed, matched without case
};

Check between(qint64 min, qint64 max)
{
    return {min, max, {}};
}
Check atMost(qint64 max)
{
    return {std::numeric_limits<qint64>::min(), max, {}};
}
Check oneOf(QStringList choices)
{
    return {std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max(), std::move(choices)};
}

struct Key {
    const char* section;
    const char* name;  // as passed: a trailing blank is part of some names and of their log lines
    Target target;
    IfMissing ifMissing;
    const char* defaultText = "";
    Check check = {};
};

constexpr auto Fail = IfMissing::Fail;
constexpr auto UseDefault = IfMissing::UseDefault;
constexpr auto Keep = IfMissing::Keep;

// Every key the loader reads, in the order it reads them.
const std::vector<Key>& keys()
{
    static const std::vector<Key> table = {
        {"COMMON", "APPNAME", TAVIX_FIELD(APPNAME), Keep},
        {"CAMERA", "CAMERAFILTERNAME", TAVIX_FIELD(CAMERAFILTERNAME), Fail},
        {"CAMERA", "CROSSBARFILTERNAME ", TAVIX_FIELD(CROSSBARFILTERNAME), UseDefault, ""},
        {"CAMERA", "GRPFILENAME", TAVIX_FIELD(GRPFILENAME), Fail},
        {"CAMERA", "TEMPBITMAPFILE ", TAVIX_FIELD(TEMPBITMAPFILE), Fail},
        {"CAMERA", "DEFAULTSCALE", TAVIX_FIELD(DEFAULTSCALE), Fail, "", between(0, 15)},
        {"FILE", "JPEGQTY", TAVIX_FIELD(JPEGQTY), Fail, "", between(10, 100)},
        {"FILE", "STILL1XSAVE", TAVIX_FIELD(STILL1XSAVE), Fail, "", between(0, 1)},
        {"FILE", "GUIDANCEFILE", TAVIX_FIELD(GUIDANCEFILE), Fail},
        {"FILE", "STRINGTABLEFILE ", TAVIX_FIELD(STRINGTABLEFILE), Fail},
        {"MEASURE", "MEASURELINECOLOR1", TAVIX_FIELD(MEASURELINECOLOR[1]), Fail},
        {"MEASURE", "MEASURELINECOLOR2", TAVIX_FIELD(MEASURELINECOLOR[2]), Fail},
        {"MEASURE", "MEASURELINECOLOR3", TAVIX_FIELD(MEASURELINECOLOR[3]), Fail},
        {"MEASURE", "MEASUREVALUECOLOR1", TAVIX_FIELD(MEASUREVALUECOLOR[1]), Fail},
        {"MEASURE", "MEASUREVALUECOLOR2", TAVIX_FIELD(MEASUREVALUECOLOR[2]), Fail},
        {"MEASURE", "PROOFFILENAME ", TAVIX_FIELD(PROOFFILENAME), Fail},
        {"MEASURE", "CURRENTPROOFNO", TAVIX_FIELD(CURRENTPROOFNO), Fail, "", between(0, 19)},
        {"MEASURE", "CROSSLINENUM", TAVIX_FIELD(CROSSLINENUM), Fail, "", between(1, 2)},
        {"MEASURE", "CROSSLINECOLOR", TAVIX_FIELD(CROSSLINECOLOR), Fail},
        {"MEASURE", "SCALECOLOR", TAVIX_FIELD(SCALECOLOR), Fail},
        {"MEASURE", "SCALEX", TAVIX_FIELD(SCALEX), Fail},
        {"MEASURE", "SCALEY", TAVIX_FIELD(SCALEY), Fail},
        {"MEASURE", "SCALETYPE", TAVIX_FIELD(SCALETYPE), Fail, "", between(0, 1)},
        {"MEASURE", "SCALEPOSITION", TAVIX_FIELD(SCALEPOSITION), Fail, "", between(0, 4)},
        {"MEASURE", "NUMBEROFDECIMALS", TAVIX_FIELD(NUMBEROFDECIMALS), Fail, "", between(0, 8)},
        {"MEASURE", "MEASUREFONTSIZE", TAVIX_FIELD(MEASUREFONTSIZE), Fail, "", between(8, 20)},
        {"MEASURE", "ANGLECOMMANDMODE", TAVIX_FIELD(ANGLECOMMANDMODE), Fail, "", between(0, 1)},
        {"MEASURE", "2POINTCOMMANDMODE", TAVIX_FIELD(_2POINTCOMMANDMODE), Fail, "", between(0, 1)},
        {"MEASURE", "CIRCLEARCSELECT", TAVIX_FIELD(CIRCLEARCSELECT), UseDefault, "0", between(0, 1)},
        {"MEASURE", "KEEPRESULT", TAVIX_FIELD(KEEPRESULT), UseDefault, "0", between(0, 1)},
        {"MEASURE", "2POINTAVERAGE", TAVIX_FIELD(_2POINTAVERAGE), UseDefault, "0", between(0, 1)},
        // Missing in settings files older than the edge snap: off.
        {"MEASURE", "EDGESNAP", TAVIX_FIELD(EDGESNAP), UseDefault, "0", between(0, 1)},
        {"ICUBE", "DEFAULTRESOLUTION", TAVIX_FIELD(DEFAULTRESOLUTION), UseDefault, "-1"},
        // No lower bound on purpose: only a too long wait is refused.
        {"ICUBE", "STILLWAITTIME", TAVIX_FIELD(STILLWAITTIME), UseDefault, "500", atMost(1000)},
        {"INTERVALSAVE", "INTERVALTIME", TAVIX_FIELD(INTERVALTIME), UseDefault, "3"},
        {"INTERVALSAVE", "NUMBEROFIMAGES", TAVIX_FIELD(NUMBEROFIMAGES), UseDefault, "2"},
        {"INTERVALSAVE", "IS_MODE", TAVIX_FIELD(IS_MODE), UseDefault, "0"},
        {"INTERVALSAVE", "IS_SAVEPATH", TAVIX_FIELD(IS_SAVEPATH), UseDefault, ""},
        // Optional: files from before camera drivers could be chosen lack it.
        {"CAMERA", "DRIVER", TAVIX_FIELD(DRIVER), UseDefault, "auto", oneOf(kCameraDrivers)},
        // Optional: which of several GenICam cameras, chosen in the camera settings.
        {"CAMERA", "CAMERAID", TAVIX_FIELD(CAMERAID), UseDefault, ""},
    };
    return table;
}

#undef TAVIX_FIELD

template <class T>
T toNumber(const QString& text)
{
    if constexpr (std::is_same_v<T, qint16>)
        return NumberText::toInt16(text);
    else if constexpr (std::is_same_v<T, qint32>)
        return NumberText::toInt32(text);
    else if constexpr (std::is_same_v<T, quint8>)
        return NumberText::toByte(text);
    else
        return NumberText::val(text);
}

// Converts the text to the key's type and stores it when the check passes.
// False when the check fails; a text that is no number throws RunError.
bool store(Settings& s, const Key& key, const QString& text)
{
    return std::visit(
        [&](auto field) {
            auto& variable = field(s);
            using T = std::remove_reference_t<decltype(variable)>;
            if constexpr (std::is_same_v<T, QString>) {
                if (key.check.choices.isEmpty()) {
                    variable = text;
                    return true;
                }
                for (const QString& choice : key.check.choices) {
                    if (choice.compare(text, Qt::CaseInsensitive) == 0) {
                        variable = choice;
                        return true;
                    }
                }
                return false;
            } else {
                const T number = toNumber<T>(text);
                if (number < key.check.min || number > key.check.max)
                    return false;
                variable = number;
                return true;
            }
        },
        key.target);
}

QString sectionAndKey(const Key& key)
{
    return QStringLiteral("[Section]=") + QLatin1String(key.section) + QStringLiteral(",[Key]=") +
           QLatin1String(key.name);
}

}  // namespace

SettingsFile::SettingsFile(QString iniPath, const ErrorLog& log) : iniPath_(std::move(iniPath)), log_(log)
{
}

bool SettingsFile::GetIniFileData(Settings& s)
{
    // An unreadable file reads like an empty one: the first mandatory key fails.
    const IniFile ini = IniFile::load(iniPath_).value_or(IniFile{});
    for (const Key& key : keys()) {
        QString text = ini.value(QLatin1String(key.section), QLatin1String(key.name));
        if (text.isEmpty()) {
            if (key.ifMissing == Keep)
                continue;
            if (key.ifMissing == Fail) {
                log_(QStringLiteral("GetIniFileData GetPrivateProfileString Error ") + sectionAndKey(key));
                return false;
            }
            text = QLatin1String(key.defaultText);
        }
        try {
            if (!store(s, key, text)) {
                log_(QStringLiteral("GetIniFileData GetPrivateProfileString Error ") + sectionAndKey(key));
                return false;
            }
        } catch (const RunError& e) {
            log_(QStringLiteral("GetIniFileData  Error.(%1)").arg(e.number()) + sectionAndKey(key));
            return false;
        }
    }
    return true;
}

bool SettingsFile::WriteIniFileData(const QString& section, const QString& key, const QString& value)
{
    if (IniFile::write(iniPath_, section, key, value))
        return true;
    logWriteError({section, key, value});
    return false;
}

void SettingsFile::logWriteError(const Write& write) const
{
    log_(QStringLiteral("WriteIniFileData WritePrivateProfileString Error [Section]=") + write.section +
         QStringLiteral(",[Key]=") + write.key + QStringLiteral(",[Value]=") + write.value);
}

void SettingsFile::writeAll(const std::vector<Write>& writes)
{
    std::optional<IniFile> file = IniFile::load(iniPath_);
    std::vector<bool> set(writes.size(), false);
    for (std::size_t i = 0; file && i < writes.size(); ++i)
        set[i] = file->setValue(writes[i].section, writes[i].key, writes[i].value);
    const bool saved = file && file->save(iniPath_);
    for (std::size_t i = 0; i < writes.size(); ++i)
        if (!saved || !set[i])
            logWriteError(writes[i]);
}

void SettingsFile::writeExitSettings(const Settings& s, qint16 selectedScaleIndex)
{
    const auto number = [](qint64 v) { return QString::number(v); };
    const QString measure = QStringLiteral("MEASURE");
    // Some keys carry a trailing blank; the file's own entry is found all the same.
    const std::vector<Write> writes = {
        {QStringLiteral("FILE"), QStringLiteral("JPEGQTY"), number(s.JPEGQTY)},
        {QStringLiteral("CAMERA"), QStringLiteral("DEFAULTSCALE"), number(selectedScaleIndex)},
        {measure, QStringLiteral("MEASURELINECOLOR1"), number(s.MEASURELINECOLOR[1])},
        {measure, QStringLiteral("MEASURELINECOLOR2"), number(s.MEASURELINECOLOR[2])},
        {measure, QStringLiteral("MEASURELINECOLOR3"), number(s.MEASURELINECOLOR[3])},
        {measure, QStringLiteral("MEASUREVALUECOLOR1"), number(s.MEASUREVALUECOLOR[1])},
        {measure, QStringLiteral("MEASUREVALUECOLOR2"), number(s.MEASUREVALUECOLOR[2])},
        {measure, QStringLiteral("CROSSLINENUM"), number(s.CROSSLINENUM)},
        {measure, QStringLiteral("CROSSLINECOLOR"), number(s.CROSSLINECOLOR)},
        {measure, QStringLiteral("SCALECOLOR"), number(s.SCALECOLOR)},
        {measure, QStringLiteral("SCALEX"), NumberText::general(s.SCALEX)},
        {measure, QStringLiteral("SCALEY"), NumberText::general(s.SCALEY)},
        {measure, QStringLiteral("SCALETYPE"), number(s.SCALETYPE)},
        {measure, QStringLiteral("SCALEPOSITION"), number(s.SCALEPOSITION)},
        {measure, QStringLiteral("CURRENTPROOFNO"), number(s.CURRENTPROOFNO)},
        {measure, QStringLiteral("NUMBEROFDECIMALS"), number(s.NUMBEROFDECIMALS)},
        {measure, QStringLiteral("MEASUREFONTSIZE"), number(s.MEASUREFONTSIZE)},
        {measure, QStringLiteral("ANGLECOMMANDMODE"), number(s.ANGLECOMMANDMODE)},
        {measure, QStringLiteral("2POINTCOMMANDMODE"), number(s._2POINTCOMMANDMODE)},
        {measure, QStringLiteral("CIRCLEARCSELECT"), number(s.CIRCLEARCSELECT)},
        {measure, QStringLiteral("KEEPRESULT"), number(s.KEEPRESULT)},
        {measure, QStringLiteral("EDGESNAP"), number(s.EDGESNAP)},
        {QStringLiteral("ICUBE"), QStringLiteral("DEFAULTRESOLUTION "), number(s.DEFAULTRESOLUTION)},
        {QStringLiteral("ICUBE"), QStringLiteral("STILLWAITTIME "), number(s.STILLWAITTIME)},
    };
    writeAll(writes);
}

void SettingsFile::writeIntervalSaveSettings(const Settings& s)
{
    const QString section = QStringLiteral("INTERVALSAVE");
    writeAll({{section, QStringLiteral("INTERVALTIME"), QString::number(s.INTERVALTIME)},
              {section, QStringLiteral("NUMBEROFIMAGES "), QString::number(s.NUMBEROFIMAGES)},
              {section, QStringLiteral("IS_MODE"), QString::number(s.IS_MODE)},
              {section, QStringLiteral("IS_SAVEPATH"), s.IS_SAVEPATH}});
}

}  // namespace tavix
