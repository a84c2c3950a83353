// The FTP actions of the "Internet" category, over WinInet.
#pragma once

enum {
    FTP_DOWNLOAD = 1,
    FTP_UPLOAD = 2,
    FTP_DELETE_FILE = 3,
    FTP_CREATE_FOLDER = 5,
    FTP_DELETE_FOLDER = 6,
};

// `remote` is the server, "/", and the path. 1 or more on success; below 1
// with the reason in StepFailureText.
long FtpAction(const char* remote, const char* user, const char* password, const char* localFile, char* outBuffer,
               long outSize, int mode);
// The step: "FTP Download", "FTP Upload", "FTP Delete File", "FTP Create
// Folder", "FTP Delete Folder".
int FtpStep(int tab, int step, const char* text);
