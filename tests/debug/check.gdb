set debuginfod enabled off
break main.cpp:19
run
print unnamed
print time
print row
print empty
print table
print version
print url
kill
