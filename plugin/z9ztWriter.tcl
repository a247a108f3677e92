load zetWriter
