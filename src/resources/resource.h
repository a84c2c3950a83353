// Resource ids shared by the resource script and the code.
#pragma once

#define IDI_MAIN 1000
#define IDB_ACTIONS 1001  // the 16 x 16 pictures of the categories (actions.bmp)
#define IDB_TOOLBAR 1002  // the toolbar's pictures (toolbar.bmp)
#define IDR_ACCELERATORS 1023
#define IDR_MAINMENU 1024

#define IDC_OUTPUT_EDIT 1047
#define IDC_ACTIONS_TREE 1172

// The step list's dialog, its tab strip and its grid; the property grid.
#define IDD_STEPLIST 1240
#define IDC_TABS 1001
#define IDC_STEP_GRID 1250
#define IDC_PROPERTY_GRID 1249

// The settings dialogs and their controls: a browse button is its field's id
// plus 10.
#define IDD_COMPILE_OPTIONS 1261
#define IDD_REPORT_OPTIONS 1262
#define IDC_COMPILE_OUTPUT 1401
#define IDC_COMPILE_ICON_FILE 1402
#define IDC_COMPILE_DEF_ICON 1403
#define IDC_COMPILE_VERSION 1404
#define IDC_COMPILE_COPYRIGHT 1405
#define IDC_COMPILE_DESCRIPTION 1406
#define IDC_COMPILE_OPTIMIZE 1407
#define IDC_BROWSE_OUTPUT 1411
#define IDC_BROWSE_ICON 1412
#define IDC_REPORT_XML 1421
#define IDC_REPORT_XSL 1422
#define IDC_REPORT_DEFAULT 1423
#define IDC_REPORT_LENGTH 1424
#define IDC_REPORT_SHOW1 1425
#define IDC_BROWSE_XML 1431
#define IDC_BROWSE_XSL 1432
// The Options sheet's page: empty, filled from the sheet's table of rows.
#define IDD_OPTIONS_PAGE 1263

// Commands of menu 1024 and accelerators 1023. 1002 to 1009 are the recent
// files and 1010 to 1017 the tabs.
#define CMD_OPEN_RECENT1 1002
#define CMD_OPEN_RECENT8 1009
#define CMD_TAB1 1010
#define CMD_TAB8 1017
#define CMD_ABOUT 1018
#define CMD_HELP 1032
#define CMD_SAVE 1038
#define CMD_SAVE_AS 1040
#define CMD_OPEN 1041
#define CMD_CLOSE 1042
#define CMD_MOVE_UP 1043
#define CMD_MOVE_DOWN 1044
#define CMD_OPTIONS 1053
#define CMD_BREAKPOINT 1054
#define CMD_KEEP_ON_TOP 1055
#define CMD_CUT 1057
#define CMD_COPY 1058
#define CMD_PASTE 1059
#define CMD_DELETE 1060
#define CMD_UNDO 1061
#define CMD_SELECT_ALL 1077
#define CMD_FIND 1085
#define CMD_SHOW_TOOLBAR 1086
#define CMD_SHOW_STATUSBAR 1090
#define CMD_COMPILE_EXE 1092
#define CMD_DUMP_ALL_WINDOWS 1103
#define CMD_INDENT 1105
#define CMD_UNINDENT 1106
#define CMD_SKIP 1110
#define CMD_OPEN_LOGFILE 1113
#define CMD_CHECK_SCRIPT 1293
#define CMD_TEST_IMAGE_STEP 1294
#define CMD_SHOW_ACTIONS 1115
#define CMD_COLLAPSE_TREE 1117
#define CMD_EXPAND_TREE 1118
#define CMD_RESET_UI 1124
#define CMD_SHOW_VARIABLES 1126
#define CMD_FIND_NEXT 1128
#define CMD_SHOW_OUTPUT 1132
#define CMD_SHOW_PROPERTIES 1133
#define CMD_EDIT_PROPERTIES 1135
#define CMD_SHORTCUTS 1136
#define CMD_FILE_PROPERTIES 1137
#define CMD_STARTUP_OPTIONS 1155
#define CMD_ADD_COMMENT 1184
#define CMD_AUTO_INDENT 1186
#define CMD_FIND_PREVIOUS 1200
#define CMD_GOTO_STEP 1202
#define CMD_NEW_STEP 1210
#define CMD_DUMP_POPUP_WINDOWS 1214
#define CMD_CHECK_UPDATES 1216
#define CMD_DUMP_MAIN_WINDOWS 1217
#define CMD_VIEW_XML 1243
#define CMD_REMOVE_SKIPS 1265
#define CMD_REMOVE_BREAKPOINTS 1266
#define CMD_SAVE_ALL 1269
#define CMD_XML_REPORT 1281
#define CMD_NEW 1282
#define CMD_NEXT_BOOKMARK 1286
#define CMD_TOGGLE_BOOKMARK 1289
#define CMD_REMOVE_BOOKMARKS 1290
#define CMD_CUSTOM_TAGS 1292
// Ids of our own above the named ones.
#define CMD_EXIT 1300
#define CMD_CLOSE_ALL 1301
#define CMD_REDO 1302
// The debug run's commands.
#define CMD_DEBUG 1380
#define CMD_DEBUG_FROM_HERE 1381
#define CMD_DEBUG_CONTINUE 1382
#define CMD_DEBUG_STEP 1383
#define CMD_DEBUG_RUN_TO_HERE 1384
#define CMD_PAUSE_ON_FAILURE 1385
#define CMD_TRY_STEP 1386
#define CMD_DEBUG_RETRY 1387
#define CMD_DEBUG_SKIP 1388
#define CMD_DEBUG_APPLY 1389
// Recording as steps and the window spy.
#define CMD_RECORD_STEPS 1400
#define CMD_WINDOW_SPY 1430
// The actions tree's Favorites menu, its filter box, the Output palette.
#define CMD_ADD_FAVORITE 1500
#define CMD_REMOVE_FAVORITE 1501
#define IDC_ACTIONS_FILTER 1502

// The prompt dialogs and their controls.
#define IDD_LOGIN 1050
#define IDD_INPUT_VALUE 1100
#define IDD_CHOOSE_LIST 1108
#define IDC_PROMPT_EDIT 1094
#define IDC_PROMPT_TEXT 1095
#define IDC_PROMPT_LIST 1096
#define IDC_PROMPT_PASSWORD 1174
