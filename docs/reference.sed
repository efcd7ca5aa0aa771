# Indents the tables and programs of the comments far enough to be taken for code.
s,^( *///)(   ),\1    \2,
