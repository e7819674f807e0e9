#pragma once

#include <QString>
#include <QtGlobal>
#include <array>

namespace tavix {

// The program-wide settings: loaded from "Tavix.Ini" at start, changed by the
// windows and dialogs during the run, written back at exit (SettingsFile).
// Member names are the settings keys.
struct Settings {
    QString APPNAME = QStringLiteral("Digital Camera Image Display Program");
    QString CAMERAFILTERNAME, CROSSBARFILTERNAME, GRPFILENAME, TEMPBITMAPFILE;
    qint16 DEFAULTSCALE = 0;
    quint8 JPEGQTY = 75;
    qint16 STILL1XSAVE = 0;
    QString GUIDANCEFILE, STRINGTABLEFILE;
    std::array<qint32, 4> MEASURELINECOLOR{};   // slots 1..3 used
    std::array<qint32, 3> MEASUREVALUECOLOR{};  // slots 1..2 used
    QString PROOFFILENAME;
    qint16 CURRENTPROOFNO = 0, CROSSLINENUM = 1;
    qint32 CROSSLINECOLOR = 0, SCALECOLOR = 0;
    double SCALEX = 0, SCALEY = 0;
    qint16 SCALETYPE = 0, SCALEPOSITION = 0, NUMBEROFDECIMALS = 0, MEASUREFONTSIZE = 8;
    qint16 ANGLECOMMANDMODE = 0, _2POINTCOMMANDMODE = 0, CIRCLEARCSELECT = 0, KEEPRESULT = 0,
           _2POINTAVERAGE = 0;
    qint16 EDGESNAP = 0;  // chkEdgeSnap: clicks move onto the nearest edge
    qint16 DEFAULTRESOLUTION = -1, STILLWAITTIME = 500;
    qint32 INTERVALTIME = 3;
    qint16 NUMBEROFIMAGES = 2, IS_MODE = 0;
    QString IS_SAVEPATH;
    QString DRIVER = QStringLiteral("auto");  // optional [CAMERA] DRIVER: one of kCameraDrivers
    QString CAMERAID;  // optional [CAMERA] CAMERAID: the GenICam camera's serial number; empty: the first
};

}  // namespace tavix
