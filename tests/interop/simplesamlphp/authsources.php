<?php
$setup = json_decode(file_get_contents(getenv('INTEROP_FOLDER') . '/setup.json'), true);
$config = ['subscriber' => ['exampleauth:StaticSource'] + $setup['attributes']];
