set debuginfod enabled off
break main.cpp:18
run
print unnamed
print time
print row
print empty
print table
print version
print url
kill
