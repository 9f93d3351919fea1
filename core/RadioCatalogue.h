#pragma once
// The radio catalogue: what each model in Radios.txt can do, one row per radio in file order (which is
// also the order of RadioCombo). Pure data and its parser; showing messages and ending the program on a
// missing file are the caller's business, so the parser can be fed any text in tests.

#include <QChar>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <vector>

namespace tv {

// One radio. Defaults are those a RADIO line gets before its own tags are applied.
struct RadioInfo {
    QChar supplier;     // protocol family: I, K, Y, T, N or F; QChar() when the RADIO value was empty
    QString model;      // the rest of the RADIO value, upper case; model branches compare against it
    QString comboName;  // the RadioCombo entry: the same text as model
    bool split = true;
    bool dualWatch = false;
    bool filterGroups = true;
    bool vfoSel = true;
    bool vfoEqual = true;
    bool vfoExchange = true;
    bool mainSubSel = false;
    bool mainSubEqual = false;
    bool mainSubExchange = false;
    bool rtty = true;
    bool wbfm = false;
    bool cwR = false;
    bool rttyR = false;
    bool filterByte = true;  // CI-V mode frames carry a filter byte, frequency frames five bytes
    bool shortFreq = false;  // CI-V frequency reports hold four bytes
    QString defaultAddress;  // CI-V address in hexadecimal, "" for none
    bool filter0 = false;    // the third filter group "Normal" is offered
    bool ptt = false;
    bool sMeter = false;  // the Kenwood decoder rewrites this once the radio has told its model
    bool serialPort = true;
    // PKT is the radio's data mode on USB, which its family's commands set and read (CI-V's data
    // sub-command); without it a client's data mode is refused and nothing is sent.
    bool dataMode = false;
    // Output power (and on CI-V radios SWR and ALC) can be read by command, for clients that ask.
    bool txLevels = false;
};

// A flag tag of the file and the member it sets, in the order the tags are tested.
struct CatalogueTag {
    const char* tag;
    bool RadioInfo::*flag;
};

inline constexpr CatalogueTag kCatalogueFlags[] = {
    {"SPLIT", &RadioInfo::split},
    {"DUALWATCH", &RadioInfo::dualWatch},
    {"FILTERGROUPS", &RadioInfo::filterGroups},
    {"VFOSEL", &RadioInfo::vfoSel},
    {"VFOEQUAL", &RadioInfo::vfoEqual},
    {"VFOEXCHANGE", &RadioInfo::vfoExchange},
    {"MAINSUBSEL", &RadioInfo::mainSubSel},
    {"MAINSUBEQUAL", &RadioInfo::mainSubEqual},
    {"MAINSUBEXCHANGE", &RadioInfo::mainSubExchange},
    {"RTTY", &RadioInfo::rtty},
    {"WBFM", &RadioInfo::wbfm},
    {"CW-R", &RadioInfo::cwR},
    {"RTTY-R", &RadioInfo::rttyR},
    {"FILTERBYTE", &RadioInfo::filterByte},
    {"SHORTFREQ", &RadioInfo::shortFreq},
    {"FILTER0", &RadioInfo::filter0},
    {"PTT", &RadioInfo::ptt},
    {"SMETER", &RadioInfo::sMeter},
    {"SERIALPORT", &RadioInfo::serialPort},
    {"DATAMODE", &RadioInfo::dataMode},
    {"TXLEVELS", &RadioInfo::txLevels},
};

class RadioCatalogue {
  public:
    // Radio indexes run from 0 to 255.
    static constexpr int kMaxRadios = 256;

    // What a load asks the caller to do. Loading stops at the first problem, so each list holds at
    // most one entry.
    struct LoadResult {
        bool fatal = false;  // the file couldn't be read: the program ends with fatalMessage
        QString fatalMessage;
        QStringList boxMessages;   // to show in a box titled with the application title
        QStringList errorReports;  // to report by the error path, as error number errorNumber
        int errorNumber = 0;
    };

    // Replaces the catalogue with the radios of the file at path.
    LoadResult load(const QString& path);
    // Replaces the catalogue with the radios of a file's text.
    LoadResult parse(const QString& text);

    int count() const { return int(radios_.size()); }
    // Raise TvError 9 for an index outside 0 .. count() - 1.
    const RadioInfo& at(int index) const;
    RadioInfo& at(int index);
    // The RadioCombo entries, in catalogue order.
    QStringList names() const;

  private:
    // false: loading ends here.
    bool parseLine(QStringView line, LoadResult& result);

    std::vector<RadioInfo> radios_;
};

}  // namespace tv
