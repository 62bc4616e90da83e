stmdcm: biglist: the list of files can't be opened: No such file or directory
