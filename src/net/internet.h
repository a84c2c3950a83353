// The handler of category 11 ("Internet"): web pages, downloads, posts,
// ping; FTP and mail come through here as well.
#pragma once

int InternetAction(int tab, int step);
