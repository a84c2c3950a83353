// The handler of category 11 ("Internet"): web pages, downloads, posts,
// ping; FTP and mail come through here as well.
#pragma once

int InternetAction(int tab, int step);

// Whether `target` names the file of the script that runs in `tab`, by
// identity, whatever its spelling; if so the step's words say that writing
// there is refused. A download onto the running script would replace the
// steps under the run.
bool RefuseRunningScript(int tab, const char* target);
