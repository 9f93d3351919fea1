#include "windows/qt/StationViews.h"

#include "forms/KavConfig.h"
#include "windows/qt/ControlViews.h"
#include "forms/KavMain.h"

#include <QBoxLayout>
#include <QGridLayout>
#include <QLineEdit>

namespace tv {

namespace {

}  // namespace

void buildDeviceFrames(KavMain& m, const PlaceWidget& place) {
    for (int d = 0; d < 3; ++d) {
        QWidget* frame = place(m.DeviceFrame[d], nullptr);
        frame->setMaximumWidth(200);
        auto* l = layoutOf<QGridLayout>(frame);
        Control* rows[3][2] = {{&m.DeviceLabel1[d], &m.DeviceControl1[d]},
                               {&m.DeviceLabel2[d], &m.DeviceControl2[d]},
                               {&m.DeviceLabel3[d], &m.DeviceControl3[d]}};
        for (int r = 0; r < 3; ++r) {
            l->addWidget(place(*rows[r][0], frame), r, 0);
            QWidget* box = place(*rows[r][1], frame);
            box->setMaximumWidth(110);
            l->addWidget(box, r, 1);
        }
        l->setRowStretch(3, 1);
    }
}

void buildDevicePage(KavConfig& c, int d, QWidget* page, const PlaceWidget& place) {
    auto* root = new QHBoxLayout(page);
    auto* left = new QGridLayout;
    int row = 0;
    left->addWidget(place(c.DeviceEnabled[d], page), row++, 0, 1, 2);
    const std::pair<Control*, Control*> fields[] = {{&c.DeviceNameLabel[d], &c.DeviceName[d]},
                                                    {&c.DeviceToleranceLabel[d], &c.DeviceTolerance[d]},
                                                    {&c.DeviceControlsLabel[d], &c.DeviceControls[d]},
                                                    {&c.DeviceControlLabel1[d], &c.DeviceControl1[d]},
                                                    {&c.DeviceControlLabel2[d], &c.DeviceControl2[d]},
                                                    {&c.DeviceControlLabel3[d], &c.DeviceControl3[d]}};
    for (const auto& [label, field] : fields) {
        left->addWidget(place(*label, page), row, 0);
        left->addWidget(place(*field, page), row++, 1);
    }
    QWidget* file = place(c.DeviceFileFrame[d], page);
    auto* fl = layoutOf<QGridLayout>(file);
    fl->addWidget(place(c.DeviceFilename[d], file), 0, 0, 1, 3);
    fl->addWidget(place(c.SelectDeviceFilenameCmd[d], file), 1, 0);
    fl->addWidget(place(c.LoadDeviceCmd[d], file), 1, 1);
    fl->addWidget(place(c.SaveDeviceCmd[d], file), 1, 2);
    left->addWidget(file, row++, 0, 1, 2);
    left->setRowStretch(row++, 1);
    left->addWidget(place(c.ConfigDeviceHelpCmd[d], page), row, 0);
    root->addLayout(left);
    root->addWidget(place(c.DeviceGrid[d], page), 1);
}

void buildMultiRadioPage(KavConfig& c, QWidget* page, const PlaceWidget& place) {
    auto* root = new QHBoxLayout(page);
    auto* entries = new QVBoxLayout;
    // One column per transceiver, one row per field; the address carries the radix beside it.
    auto table = [&](Frame& frame, int firstField,
                     std::initializer_list<std::function<Control&(int)>> columns) {
        QWidget* f = place(frame, page);
        auto* g = layoutOf<QGridLayout>(f);
        // The radios' numbers head the first table; the second lines up under it.
        if (firstField == 0)
            for (int n = 0; n < KavConfig::kMultiEntries; ++n)
                g->addWidget(place(c.MultiRadioLabel[n], f), 0, n + 1);
        int row = 1;
        for (const auto& field : columns) {
            g->addWidget(place(c.MultiFieldLabel[firstField + row - 1], f), row, 0);
            for (int n = 0; n < KavConfig::kMultiEntries; ++n) g->addWidget(place(field(n), f), row, n + 1);
            ++row;
        }
        return std::make_pair(f, g);
    };
    auto [radios, rg] = table(
        c.Frame8, 0,
        {[&](int n) -> Control& { return c.MultiModel[n]; },
         [&](int n) -> Control& { return c.MultiAddr[n]; }, [&](int n) -> Control& { return c.MultiPoll[n]; },
         [&](int n) -> Control& { return c.MultiInterval[n]; },
         [&](int n) -> Control& { return c.MultiName[n]; },
         [&](int n) -> Control& { return c.MultiEnabled[n]; }});
    rg->addWidget(place(c.MultiHexLabel, radios), 2, 4);
    rg->addWidget(place(c.MultiDecLabel, radios), 2, 4);
    entries->addWidget(radios);
    auto ports = table(
        c.Frame9, 6,
        {[&](int n) -> Control& { return c.MultiPort[n]; }, [&](int n) -> Control& { return c.MultiBaud[n]; },
         [&](int n) -> Control& { return c.MultiParity[n]; },
         [&](int n) -> Control& { return c.MultiWord[n]; }, [&](int n) -> Control& { return c.MultiStop[n]; },
         [&](int n) -> Control& { return c.MultiDTR[n]; }, [&](int n) -> Control& { return c.MultiRTS[n]; }});
    entries->addWidget(ports.first);
    entries->addStretch(1);
    root->addLayout(entries, 2);
    QWidget* bands = place(c.Frame10, page);
    auto* bl = layoutOf<QGridLayout>(bands);
    bl->addWidget(place(c.MultiAutoSelect, bands), 0, 0, 1, 2);
    for (int b = 1; b <= KavConfig::kBandRadioCombos; ++b) {
        bl->addWidget(place(c.BandRadioLabel[b], bands), b, 0);
        bl->addWidget(place(c.BandRadioCombo[b], bands), b, 1);
    }
    bl->setRowStretch(KavConfig::kBandRadioCombos + 1, 1);
    root->addWidget(bands, 1);
}

}  // namespace tv
