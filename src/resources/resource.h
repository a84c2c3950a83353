// Resource ids shared by the resource script and the code.
#pragma once

#define IDI_MAIN 1000
#define IDR_ACCELERATORS 1023
#define IDR_MAINMENU 1024

#define IDC_OUTPUT_EDIT 1047
#define IDC_ACTIONS_TREE 1172

#define CMD_OPEN_RECENT1 1002
#define CMD_OPEN 1041
#define CMD_EXIT 1043
#define CMD_COMPILE_EXE 1092
#define CMD_XML_REPORT 1281
#define CMD_DUMP_ALL_WINDOWS 1103
#define CMD_DUMP_POPUP_WINDOWS 1214
#define CMD_DUMP_MAIN_WINDOWS 1217

// The prompt dialogs and their controls.
#define IDD_LOGIN 1050
#define IDD_INPUT_VALUE 1100
#define IDD_CHOOSE_LIST 1108
#define IDC_PROMPT_EDIT 1094
#define IDC_PROMPT_TEXT 1095
#define IDC_PROMPT_LIST 1096
#define IDC_PROMPT_PASSWORD 1174
