#pragma once
// Every Japanese text of the library with its English meaning.
//
// The library holds these texts as bytes of code page 932. A program that shows a report can translate it
// with the lists alone and needs to link nothing for it: it passes the name of a macro X(key, text, English),
// whose key is a constant's name in the first list and a field's value in the others. The texts are UTF-8
// literals, in which %d and %s stand for numbers and texts that a report fills in.

// clang-format off

/// Keys and values of reports, labels of the error log, and texts of log-stack entries, by the names of their
/// constants.
#define MM_REPORT_TEXTS(X) \
    X(kTextDiskForCaller,   u8"呼び出し側が利用できるバイト数=",         "bytes available to the caller=") \
    X(kTextDiskTotal,       u8"ディスク全体のバイト数=",                 "bytes of the whole disk=") \
    X(kTextDiskFree,        u8"ディスク全体の空きバイト数=",             "free bytes of the whole disk=") \
    X(kTextImport,          u8"入力ファイル object 変換処理",            "input file to object conversion") \
    X(kTextExport,          u8"object 出力ファイル変換処理",             "object to output file conversion") \
    X(kTextNoId,            u8"ID指定なし",                              "no ID given") \
    X(kTextInputMemory,     u8"入力画像[%d]：使用メモリ量",              "input image [%d]: memory used") \
    X(kTextInputState,      u8"入力画像[%d]：状態",                      "input image [%d]: state") \
    X(kTextInputInfo,       u8"入力画像[%d]：Info",                      "input image [%d]: info") \
    X(kTextOutputMemory,    u8"出力画像[%d]：使用メモリ量",              "output image [%d]: memory used") \
    X(kTextOutputState,     u8"出力画像[%d]：状態",                      "output image [%d]: state") \
    X(kTextOutputInfo,      u8"出力画像[%d]：Info",                      "output image [%d]: info") \
    X(kTextTemporaryMemory, u8"テンポラリ画像[%d]：使用メモリ量",        "temporary image [%d]: memory used") \
    X(kTextTemporaryState,  u8"テンポラリ画像[%d]：状態",                "temporary image [%d]: state") \
    X(kTextTemporaryInfo,   u8"テンポラリ画像[%d]：Info",                "temporary image [%d]: info") \
    X(kTextOnMemory,        u8"オンメモリ",                              "on memory") \
    X(kTextWholeFileMapped, u8"ファイル全マッピング",                    "whole file mapped") \
    X(kTextBanded,          u8"ファイル：帯高さ=%d",                     "file: band height=%d") \
    X(kTextStepImages,      u8"工程単位の使用メモリ量(画像)",            "memory used by the step (images)") \
    X(kTextStepWork,        u8"工程単位の使用メモリ量(Work)",            "memory used by the step (work)") \
    X(kTextMemoryLeft,      u8"残メモリ量",                              "memory left") \
    X(kTextMaximum,         u8"最大使用メモリ量",                        "maximum memory used") \
    X(kTextMaximumForced,   u8"最大使用メモリ量（強制オンメモリ）",      "maximum memory used (forced on memory)") \
    X(kTextThreadSection,   u8"スレッド管理リスト",                      "thread management list") \
    X(kTextThreadKey,       u8"№[%d] スレッドID[%d] 工程[%s] 作業[%s]", "No. [%d] thread ID [%d] step [%s] work [%s]") \
    X(kTextMapSection,      u8"マッピング管理リスト",                    "mapping management list") \
    X(kTextMapKey,          u8"№[%d] [%s]",                             "No. [%d] [%s]")

/// Names of the functions that run a step, by bits 20 to 31 of a process identifier.
#define MM_FUNCTION_NAMES(X) \
    X(0x00100000, u8"傷消し処理関数",                   "scratch-removal function") \
    X(0x00200000, u8"フィルム処理用初期化関数",         "film processing start-up function") \
    X(0x00300000, u8"フィルム処理用終了関数",           "film processing end function") \
    X(0x00400000, u8"入力補正関数",                     "input correction function") \
    X(0x00500000, u8"フィルム処理用画像補正関数",       "film processing image-correction function") \
    X(0x02200000, u8"メディア処理用初期化関数",         "media processing start-up function") \
    X(0x02300000, u8"メディア処理用終了関数",           "media processing end function") \
    X(0x02500000, u8"メディア処理用画像補正関数",       "media processing image-correction function") \
    X(0x04800000, u8"クロス位置検出",                   "cross-position detection") \
    X(0x04900000, u8"画像補正処理",                     "image correction processing") \
    X(0x05100000, u8"デジカメ判定の初期化",             "digital-camera judgement start-up") \
    X(0x05200000, u8"デジカメ自動判定終了関数",         "digital-camera automatic judgement end function") \
    X(0x05300000, u8"デジカメ自動判定Exif情報取得関数", "digital-camera automatic judgement, Exif information function") \
    X(0x05400000, u8"デジカメ自動判定関数",             "digital-camera automatic judgement function") \
    X(0x07100000, u8"CMS関数",                          "colour-management function") \
    X(0x07200000, u8"ＶＤＸ表示用CMS関数",              "colour-management function for ＶＤＸ display") \
    X(0x07300000, u8"フィルム停止位置確認表示関数",     "film stop-position check display function") \
    X(0x07400000, u8"32bit微小回転関数",                "32-bit fine rotation function") \
    X(0x07500000, u8"NxNフィルタ",                      "N×N filter")

/// Names of the categories of steps, by bits 16 to 19.
#define MM_CATEGORY_NAMES(X) \
    X(0x00010000, u8"フィルム関係", "film") \
    X(0x00020000, u8"メディア関係", "media") \
    X(0x00040000, u8"画像補正関係", "image correction") \
    X(0x00070000, u8"その他",       "other")

/// Names of the processing steps, by bits 8 to 15.
#define MM_STEP_NAMES(X) \
    X(0x0100, u8"CCD出力データゲイン",                        "CCD output data gain") \
    X(0x0200, u8"Film特性",                                   "film characteristics") \
    X(0x0300, u8"CCDノイズ",                                  "CCD noise") \
    X(0x0400, u8"粒状抑制",                                   "grain suppression") \
    X(0x1100, u8"色空間変換",                                 "colour-space conversion") \
    X(0x1200, u8"覆い焼き",                                   "dodging") \
    X(0x1300, u8"シャープネス",                               "sharpness") \
    X(0x1400, u8"濃度調整",                                   "density adjustment") \
    X(0x1500, u8"色相彩度調整",                               "hue and saturation adjustment") \
    X(0x1600, u8"色領域別シャープ",                           "sharpness by colour region") \
    X(0x1700, u8"色空間逆変換",                               "inverse colour-space conversion") \
    X(0x1800, u8"ガンマLUT",                                  "gamma look-up table") \
    X(0x2100, u8"メディア16ビット変換",                       "media 16-bit conversion") \
    X(0x2200, u8"JPEGブロックノイズ除去",                     "JPEG block-noise removal") \
    X(0x2300, u8"デジカメ補正",                               "digital-camera correction") \
    X(0x3300, u8"メディアシャープネス",                       "media sharpness") \
    X(0x3400, u8"メディア濃度調整・色かぶり調整・ガンマ補正", "media density, colour-cast and gamma correction") \
    X(0x3500, u8"フィルムメディアシャープネス",               "film media sharpness") \
    X(0x3600, u8"メディアシャープネスNxN",                    "media sharpness N×N") \
    X(0x3700, u8"メディアシャープネス（NxNフィルタ16bit）",   "media sharpness, N×N filter 16-bit") \
    X(0x4100, u8"トリミング",                                 "trimming") \
    X(0x4200, u8"拡大縮小",                                   "enlargement and reduction") \
    X(0x4300, u8"回転(微小)",                                 "fine rotation") \
    X(0x4400, u8"余白部処理(08BIT)",                          "margin processing, 8-bit") \
    X(0x5100, u8"QLA補正_周辺光量補正",                       "QLA correction, peripheral light") \
    X(0x5200, u8"QLA補正_収差補正",                           "QLA correction, aberration") \
    X(0x5300, u8"QLA補正_歪み補正（糸巻・樽型）",             "QLA correction, pincushion and barrel distortion") \
    X(0x5400, u8"QLA補正_台形補正",                           "QLA correction, keystone") \
    X(0x6100, u8"色領域別粒状抑制処理",                       "grain suppression by colour region") \
    X(0x6200, u8"自動赤目処理",                               "automatic red-eye processing") \
    X(0x6300, u8"手動スクイズムラ処理",                       "manual squeeze-unevenness processing") \
    X(0x6400, u8"手動赤目処理(2005)",                         "manual red-eye processing, 2005") \
    X(0x6500, u8"クロスフィルタ処理",                         "cross filter processing") \
    X(0x6600, u8"ソフトフィルタ処理",                         "soft filter processing") \
    X(0x7100, u8"CMS VDX",                                    "colour management VDX") \
    X(0x7200, u8"CMS VDX補間有り",                            "colour management VDX with interpolation") \
    X(0x7500, u8"NxNフィルタ",                                "N×N filter") \
    X(0x7600, u8"余白処理",                                   "margin processing") \
    X(0x8000, u8"イメージ読み込み",                           "image reading") \
    X(0x8100, u8"イメージ書込み",                             "image writing")

// clang-format on
